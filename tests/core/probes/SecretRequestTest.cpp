#include "core/probes/SecretRequest.h"

#include "core/support/Bytes.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using Verb = SecretRequest::Verb;
using namespace std::string_literals;

TEST(SecretRequest, ReadsAVerbAndAnAccount) {
    const std::string maxAccount = "a" + times(31, "-");
    for (const Verb verb : allCases<Verb>)
        EXPECT_EQ(SecretRequest::parse(Strings{std::string(rawText(verb)), maxAccount}),
                  (SecretRequest{.verb = verb, .account = maxAccount}));
    expectVerdicts([](const std::string& verb) { return SecretRequest::parse(Strings{verb, "a"}); },
                   {"get", "set", "delete"}, {"GET", "put", "delete_", "", "get "});
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool isLetter = c >= 'a' && c <= 'z';
        const bool isInner = isLetter || (c >= '0' && c <= '9') || c == '-';
        EXPECT_EQ(SecretRequest::validAccount(std::string{c}), isLetter) << byte;
        EXPECT_EQ(SecretRequest::validAccount(std::string{'a', c}), isInner) << byte;
    }
    for (const Strings& refused :
         {Strings{}, {"get"}, {"get", "a", ""}, {"get", ""}, {"get", maxAccount + "a"}})
        EXPECT_FALSE(SecretRequest::parse(refused)) << testing::PrintToString(refused);
}

/// Returns the value, and checks that the raw bytes were overwritten.
std::optional<std::string> valueOf(std::string_view text) {
    const ByteView given = bytesOf(text);
    Bytes raw(given.begin(), given.end());
    auto value = SecretRequest::value(raw);
    EXPECT_THAT(raw, testing::AllOf(testing::SizeIs(text.size()), testing::Each(0)));
    return value;
}

TEST(SecretRequest, KeepsAValueAsItIsButForOneLineEnding) {
    const std::string longest = times(4094, "x") + "\u00E9";
    for (const std::string& value :
         {"hunter2"s, " "s, "\uFEFFa b\u0085\u2028\U0010FFFF"s, longest}) {
        for (const char* ending : {"", "\n", "\r\n"})
            EXPECT_EQ(valueOf(value + ending), value) << value;
        expectRefused(valueOf, each(value + "#", {"\r", "\n\n", "\r\n\n", "\n\r\n", "\t", "\x7F"}));
    }
    expectRefused(valueOf,
                  {"", "\n", "\r\n", "\xFF", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                   "a\xC3\n", "a\0"s, longest + "x", longest + "x\n", longest + "x\r\n"});
}

} // namespace
} // namespace velmo
