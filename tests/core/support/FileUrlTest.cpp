#include "core/support/FileUrl.h"

#include "lab/instruments/AnyValues.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

TEST(FileUrl, EscapesWhatMayNotStandInAnAddress) {
    const std::pair<std::string, std::string> cases[] = {
        {"/", "file:///"},
        {"/a-b._~!$&'()*+,:=@Z9/", "file:///a-b._~!$&'()*+,:=@Z9/"},
        {"/100%;?#[]\"<>\\^`{|} ", "file:///100%25%3B%3F%23%5B%5D%22%3C%3E%5C%5E%60%7B%7C%7D%20"},
        {"/caf\u00E9", "file:///caf%C3%A9"},
        {{"/\xFF\n\x7F\0", 5}, "file:///%FF%0A%7F%00"}};
    for (const auto& [path, text] : cases)
        EXPECT_EQ(FileUrl{path}.text(), text) << testing::PrintToString(path);
    for (const char* relative : {"evil.example/x", ""})
        EXPECT_FALSE(FileUrl{relative}.text()) << relative;
}

TEST(FileUrl, ReadsThePathOfAnAddress) {
    const std::pair<std::string, std::string> accepted[] = {
        {"file:///", "/"},
        {"file://", ""},
        {"file://server/share", "/share"},
        {"file://server", ""},
        {"file:///My%20Apps/X.app/", "/My Apps/X.app/"},
        {"file:///a//../b+c", "/a//../b+c"},
        {"file:///%2520%2F%2f", "/%20//"},
        {"file:///caf%C3%A9%0a", "/caf\u00E9\n"},
        {"file:///a?b#c", "/a"}};
    for (const auto& [text, path] : accepted)
        EXPECT_EQ(FileUrl::parse(text), FileUrl{path}) << text;
    expectRefused(FileUrl::parse, {"file:/a", "FILE:///a", "https://x/a", "", "/a"});
    expectRefused(
        FileUrl::parse, "file:///#",
        {"%00", "%FF", "%zz", "%2", "%", "a b", "caf\u00E9", "[", "a|b", "a\\b", {"a\0", 2}});
}

TEST(FileUrl, AnAddressGoesRound) {
    forAny([](AnyValues any) {
        std::string path = "/" + Text::repaired(any.bytes());
        std::erase(path, '\0');
        EXPECT_EQ(FileUrl::parse(FileUrl{path}.text().value()), FileUrl{path});
    });
}

} // namespace
} // namespace velmo
