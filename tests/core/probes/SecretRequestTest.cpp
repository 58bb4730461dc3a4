#include "core/probes/SecretRequest.h"

#include "core/support/Bytes.h"

#include <gmock/gmock.h>

#include <vector>

namespace velmo {
namespace {

using Verb = SecretRequest::Verb;
using namespace std::string_literals;
using Words = std::vector<std::string>;

TEST(SecretRequest, ReadsAVerbAndAnAccount) {
    const std::string longest = "a" + std::string(31, '-');
    const std::pair<Words, SecretRequest> accepted[] = {
        {{"get", "api-key"}, {Verb::get, "api-key"}},
        {{"set", "a"}, {Verb::set, "a"}},
        {{"delete", longest}, {Verb::delete_, longest}},
        {{"get", "z0-"}, {Verb::get, "z0-"}},
    };
    for (const auto& [words, request] : accepted)
        EXPECT_EQ(SecretRequest::parse(words), request) << testing::PrintToString(words);

    for (const char* verb : {"GET", "put", "delete_", "", "get "})
        EXPECT_FALSE(SecretRequest::parse(Words{verb, "a"})) << verb;
    for (const std::string& account : {""s, "A"s, "aB"s, "1a"s, "-a"s, "a_b"s, "a b"s, "a\n"s,
                                       "a\0"s, "a\u00E9"s, "\xE1"s, longest + "-"})
        EXPECT_FALSE(SecretRequest::parse(Words{"get", account})) << account;
    for (const Words& words : {Words{}, Words{"get"}, Words{"get", "a", ""}})
        EXPECT_FALSE(SecretRequest::parse(words)) << testing::PrintToString(words);
}

/// Checks on the way that nothing of the raw bytes stays.
std::optional<std::string> valueOf(std::string_view text) {
    const ByteView given = bytesOf(text);
    Bytes raw(given.begin(), given.end());
    auto value = SecretRequest::value(raw);
    EXPECT_THAT(raw, testing::AllOf(testing::SizeIs(text.size()), testing::Each(0)));
    return value;
}

TEST(SecretRequest, KeepsAValueAsItIsButForOneLineEnding) {
    const std::string most(SecretRequest::maxBytes, 'x');
    const std::string mostInTwos = std::string(SecretRequest::maxBytes - 2, 'x') + "\u00E9";
    const std::pair<std::string, std::string> accepted[] = {
        {"hunter2", "hunter2"},
        {"hunter2\n", "hunter2"},
        {"hunter2\r\n", "hunter2"},
        {" \n", " "},
        {"\uFEFFa b\u0085\u2028\U0010FFFF", "\uFEFFa b\u0085\u2028\U0010FFFF"},
        {most, most},
        {most + "\n", most},
        {most + "\r\n", most},
        {mostInTwos + "\r\n", mostInTwos},
    };
    for (const auto& [raw, value] : accepted)
        EXPECT_EQ(valueOf(raw), value) << raw;

    for (const char* raw :
         {"", "\n", "\r\n", "\r", "a\r", "a\n\n", "a\r\n\n", "a\n\r\n", "a\tb", "a\x7F", "\xFF",
          "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xC3\n"})
        EXPECT_FALSE(valueOf(raw)) << raw;
    EXPECT_FALSE(valueOf("a\0"s));
    for (const char* ending : {"x", "x\n", "x\r\n", "\n\r\n"})
        EXPECT_FALSE(valueOf(most + ending)) << ending;
}

} // namespace
} // namespace velmo
