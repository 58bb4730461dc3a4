#include "core/windows/MosaicHotkey.h"

#include "core/support/Text.h"

#include <cstddef>
#include <iterator>

namespace velmo {

namespace {

constexpr std::size_t minModifiers = 2;

bool isPlus(char32_t scalar) {
    return scalar == U'+';
}

/// Returns the mask of all the modifiers, or nothing if a name is unknown or repeated, or if there
/// are too few.
std::optional<std::uint32_t> combined(std::span<const std::string_view> names) {
    if (names.size() < minModifiers)
        return std::nullopt;
    std::uint32_t masks = 0;
    for (const std::string_view name : names) {
        const MosaicModifier* found =
            std::ranges::find(MosaicHotkey::modifierFlags, name, &MosaicModifier::name);
        if (found == std::end(MosaicHotkey::modifierFlags) || (masks & found->mask) != 0)
            return std::nullopt;
        masks |= found->mask;
    }
    return masks;
}

} // namespace

std::optional<MosaicHotkey> MosaicHotkey::parse(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !Text::isOneOf(line.substr(0, equals), ids))
        return std::nullopt;
    const std::string lowered = Text::lowercased(line.substr(equals + 1));
    const std::vector<std::string_view> names = Text::pieces(lowered, isPlus);
    if (names.empty())
        return std::nullopt;
    const AnsiKey* key = findKey(keyCodes, names.back());
    const auto masks = combined(std::span(names).first(names.size() - 1));
    if (key == nullptr || !masks)
        return std::nullopt;
    return MosaicHotkey{
        .id = std::string(line.substr(0, equals)), .keyCode = key->code, .modifiers = *masks};
}

std::vector<MosaicHotkey> MosaicHotkey::parseAll(std::span<const std::string> lines) {
    std::vector<MosaicHotkey> hotkeys;
    for (const std::string& line : lines) {
        if (auto hotkey = parse(line))
            hotkeys.push_back(*std::move(hotkey));
    }
    return hotkeys;
}

} // namespace velmo
