#include "core/input/LayoutKeySearch.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo::LayoutKeySearch {

namespace {

/// Returns the modifiers of the state that the user did not ask for.
std::vector<HotkeyModifier> extraModifiers(LayoutState state,
                                           std::span<const HotkeyModifier> userModifiers) {
    auto extra = state.modifiers();
    std::erase_if(extra, [&](HotkeyModifier modifier) {
        return std::ranges::find(userModifiers, modifier) != userModifiers.end();
    });
    return extra;
}

/// Returns the form in which characters are compared. Accents are composed, because a layout may
/// give "é" as one scalar or as two.
std::string comparable(std::string_view character, bool caseMatters) {
    return Text::composed(caseMatters ? std::string(character) : Text::lowercased(character));
}

} // namespace

std::optional<Match> find(std::string_view character, std::span<const HotkeyModifier> userModifiers,
                          CodeRange codes, const Translate& translate) {
    const auto findIn = [&](LayoutState state,
                            const std::vector<HotkeyModifier>& extra) -> std::optional<Match> {
        const bool caseMatters = state.contains(LayoutState::shift);
        const std::string wanted = comparable(character, caseMatters);
        for (std::uint16_t code = codes.first; code < codes.end; ++code) {
            const auto given = translate(code, state);
            if (given && !given->empty() && comparable(*given, caseMatters) == wanted)
                return Match{.code = code, .extra = extra};
        }
        return std::nullopt;
    };
    for (const bool needsExtra : {false, true}) {
        for (const LayoutState state : LayoutState::searchOrder) {
            const auto extra = extraModifiers(state, userModifiers);
            if (extra.empty() == needsExtra)
                continue;
            if (auto match = findIn(state, extra))
                return match;
        }
    }
    return std::nullopt;
}

} // namespace velmo::LayoutKeySearch
