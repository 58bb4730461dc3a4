#include "core/support/FileUrl.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace velmo
