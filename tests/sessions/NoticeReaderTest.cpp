#include "sessions/NoticeReader.h"

#include <gtest/gtest.h>

#include <string>

namespace velmo {
namespace {

using Notice = std::optional<std::string>;

/// Returns the last thing that the output asks for, read in two pieces.
Notice read(std::string_view output, std::size_t cut) {
    NoticeReader reader;
    const Notice first = reader.read(bytesOf(output.substr(0, cut)));
    const Notice second = reader.read(bytesOf(output.substr(cut)));
    const bool isHidden = second == "" && first && !first->empty();
    return second && !isHidden ? second : first;
}

TEST(NoticeReader, FindsBellsAndNoticesWhereverTheOutputIsCut) {
    const std::string longest(NoticeReader::maxOsc - 2, 'x');

    const struct {
        std::string output;
        Notice notice;
    } cases[] = {
        {"text \033[31mred\033[0m \033]0;a title\a \033]8;;http://a\033\\link", std::nullopt},
        {"\a", ""},
        {"done\a\r\n", ""},
        {"\033[3\a1m", ""},
        {"\033\a", ""},
        {"\033]9;done\a", "done"},
        {"\033]9;done\033\\", "done"},
        {"\033]9;a;b\033\\\a", "a;b"},
        {"\033]9;one\a\033]9;two\a", "two"},
        {"\a\033]9;one\033\\", "one"},
        {"\033]9;4;1;50\a\033]9;4\a\033]9;\a", std::nullopt},
        {"\033]9;2 tests failed\a", "2 tests failed"},
        {"\033]777;notify;Build;it is done\a", "Build: it is done"},
        {"\033]777;notify;Build\a", "Build"},
        {"\033]777;notify;Build;\033\\", "Build"},
        {"\033]777;precmd\a\033]99;x\a\033]19;x\a", std::nullopt},
        {"\033]9;a\x1B[31m\xE2\x80\xAE\x01z\a", ""},
        {"\033]9;a\xE2\x80\xAE\x01z\a", "az"},
        {"\033]9;gone\x18 \033]9;gone\x1A", std::nullopt},
        {"\033Pq\a\033]9;hidden\a\033\\\033_x\a\033\\\033^\a\033\\\033X\a\033\\", "hidden"},
        {"\033]9;gone\x18\a", ""},
        {"\033]9;gone\x1A\033\\", std::nullopt},
        {"\033P\a\a\x18\033P\a\033\\", std::nullopt},
        {"\033\033]9;x\a", "x"},
        {"\033P\033\033]9;x\a", "x"},
        {"\033]9;" + longest + "\a", longest.substr(0, 200)},
        {"\033]9;" + longest + "x\a", std::nullopt},
    };

    for (const auto& [output, notice] : cases) {
        for (std::size_t cut = 0; cut <= output.size(); ++cut)
            EXPECT_EQ(read(output, cut), notice) << testing::PrintToString(output) << " at " << cut;
    }
}

} // namespace
} // namespace velmo
