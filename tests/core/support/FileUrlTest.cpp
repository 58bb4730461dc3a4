#include "core/support/FileUrl.h"

#include "core/support/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

TEST(FileUrl, EscapesWhatMayNotStandInAnAddress) {
    const std::pair<std::string, std::string> cases[] = {
        {"/", "file:///"},
        {"/Applications/My App.app", "file:///Applications/My%20App.app"},
        {"/a-b._~!$&'()*+,:=@Z9/", "file:///a-b._~!$&'()*+,:=@Z9/"},
        {"/100%;?#[]\"<>\\^`{|}", "file:///100%25%3B%3F%23%5B%5D%22%3C%3E%5C%5E%60%7B%7C%7D"},
        {"/caf\u00E9", "file:///caf%C3%A9"},
        {"/\xFF\n\x7F", "file:///%FF%0A%7F"},
        {std::string("/\0", 2), "file:///%00"},
    };
    for (const auto& [path, text] : cases)
        EXPECT_EQ(FileUrl{path}.text(), text) << testing::PrintToString(path);
}

TEST(FileUrl, ARelativePathHasNoAddress) {
    EXPECT_FALSE(FileUrl{"evil.example/x"}.text());
    EXPECT_FALSE(FileUrl{}.text());
}

TEST(FileUrl, ReadsThePathOfAnAddress) {
    const std::pair<std::string, std::string> accepted[] = {
        {"file:///", "/"},
        {"file://", ""},
        {"file://server/share", "/share"},
        {"file://server", ""},
        {"file:///My%20Apps/X.app/", "/My Apps/X.app/"},
        {"file:///a//", "/a//"},
        {"file:///a/../b+c", "/a/../b+c"},
        {"file:///%2520%2F%2f", "/%20//"},
        {"file:///caf%C3%A9%0a", "/caf\u00E9\n"},
        {"file:///a?b#c", "/a"},
    };
    for (const auto& [text, path] : accepted)
        EXPECT_EQ(FileUrl::parse(text), FileUrl{path}) << text;
    for (const std::string& text :
         {std::string("file:/a"), std::string("FILE:///a"), std::string("https://x/a"),
          std::string(), std::string("/a"), std::string("file:///%00"), std::string("file:///%FF"),
          std::string("file:///%zz"), std::string("file:///%2"), std::string("file:///%"),
          std::string("file:///a b"), std::string("file:///caf\u00E9"), std::string("file:///["),
          std::string("file:///a|b"), std::string("file:///a\\b"), std::string("file:///a\0", 10)})
        EXPECT_FALSE(FileUrl::parse(text)) << testing::PrintToString(text);
}

RC_GTEST_PROP(FileUrl, AnAddressGoesRound, (const std::vector<std::uint16_t>& units)) {
    std::string path = "/";
    for (const std::uint16_t unit : units) {
        if (unit != 0 && (unit < 0xD800 || unit > 0xDFFF))
            Text::append(path, unit);
    }
    RC_ASSERT(FileUrl::parse(FileUrl{path}.text().value()) == FileUrl{path});
}

} // namespace
} // namespace velmo
