#include "core/support/Text.h"
#include "core/windows/MosaicHotkey.h"
#include "fuzz/Fuzz.h"

#include <bit>

namespace velmo::Fuzz {

namespace {

void checkMosaicLines(Input input) {
    const auto lines = input.words();
    const auto hotkeys = MosaicHotkey::parseAll(lines);
    require(hotkeys.size() <= lines.size());
    for (const MosaicHotkey& hotkey : hotkeys) {
        require(Text::isOneOf(hotkey.id, MosaicHotkey::ids)
                && std::popcount(hotkey.modifiers) >= 2);
        std::string line = hotkey.id + "=";
        for (const auto& [name, mask] : MosaicHotkey::modifierFlags)
            line.append((hotkey.modifiers & mask) != 0 ? name : "").append("+");
        const auto* const key =
            std::ranges::find(MosaicHotkey::keyCodes, hotkey.keyCode, &AnsiKey::code);
        require(key != MosaicHotkey::keyCodes.end());
        require(MosaicHotkey::parse(line.append(key->name)) == hotkey);
    }
}

const Target mosaicLinesTarget("MosaicLines", checkMosaicLines);

} // namespace

} // namespace velmo::Fuzz
