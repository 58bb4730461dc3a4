#include "tools/velmo-session/KeyNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmo {
namespace {

TEST(KeyNames, NameKeysAndLeaveTextAsItIs) {
    using namespace std::string_literals;

    const struct {
        std::vector<std::string> words;
        std::string typed;
    } cases[] = {
        {{}, ""},
        {{"ls", "Space", "-l", "Enter"}, "ls -l\r"},
        {{"C-c", "^c", "C-C"}, "\x03\x03\x03"},
        {{"C-@", "C-[", "C-_", "C-?"}, "\0\x1B\x1F\x7F"s},
        {{"M-x", "M-Enter", "M-C-c", "M-M-a"}, "\033x\033\r\033\x03\033\033a"},
        {{"Up", "F1", "F12", "PageDown"}, "\033[A\033OP\033[24~\033[6~"},
        {{"enter", "C-", "C-1", "M-", "^", "C-ab", "M-ab", "F13"}, "enterC-C-1M-^C-abM-abF13"},
        {{"Enter", "--", "Enter", "--", "C-c"}, "\rEnter--C-c"},
        {{"\xC3\xA4", "M-\xC3\xA4"}, "\xC3\xA4M-\xC3\xA4"},
    };

    for (const auto& [words, typed] : cases)
        EXPECT_EQ(typedBy(words), typed) << testing::PrintToString(words);
}

} // namespace
} // namespace velmo
