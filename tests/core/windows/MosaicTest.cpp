#include "core/output/Output.h"
#include "core/windows/MosaicEvent.h"
#include "core/windows/MosaicHotkey.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

TEST(MosaicHotkey, ReadsWhatTheUserConfigures) {
    EXPECT_EQ(MosaicHotkey::keyCodes.size(), 43U);
    const std::pair<std::string, MosaicHotkey> accepted[] = {
        {"grid=ctrl+alt+g", {"grid", 5, 6144}},
        {"side=CTRL+Alt+LEFT", {"side", 123, 6144}},
        {"frontApp=+cmd++shift+return+", {"frontApp", 36, 768}},
        {"pause=cmd+shift+alt+ctrl+0", {"pause", 29, 6912}},
    };
    for (const auto& [line, hotkey] : accepted)
        EXPECT_EQ(MosaicHotkey::parse(line), hotkey) << line;
    for (const char* line : {"", "grid", "=ctrl+alt+g", "tile=ctrl+alt+g", "Grid=ctrl+alt+g",
                             "grid =ctrl+alt+g", "grid=ctrl+option+g", "grid=ctrl+alt+escape"})
        EXPECT_FALSE(MosaicHotkey::parse(line)) << line;
    for (const char* keys :
         {"", "+", "g", "cmd+g", "cmd+cmd+g", "cmd+cmd+alt+g", "ctrl+alt", "g+ctrl+alt",
          "ctrl=alt+g", " ctrl+alt+g", "ctrl+alt+g ", "ctrl+alt+g=x", "ctrl+win+g", "ctrl+fn+g",
          "ctrl+alt+f1", "ctrl+alt+enter", "ctrl+alt+-", "ctrl+alt+g\xFF"})
        EXPECT_FALSE(MosaicHotkey::parse(std::string("grid=") + keys)) << keys;
    const std::string lines[] = {"up=ctrl+alt+u", "# off", "grid=cmd+g", "up=ctrl+alt+w"};
    EXPECT_THAT(MosaicHotkey::parseAll(lines),
                testing::ElementsAre(MosaicHotkey{"up", 32, 6144}, MosaicHotkey{"up", 13, 6144}));
}

TEST(MosaicEvent, LeavesOutWhatIsAbsent) {
    EXPECT_EQ(Output::jsonLine(MosaicEvent{"a", "grid", {}}), R"({"id":"grid","type":"a"})");
    EXPECT_EQ(Output::jsonLine(MosaicEvent{"a", {}, false}), R"({"on":false,"type":"a"})");
}

} // namespace
} // namespace velmo
