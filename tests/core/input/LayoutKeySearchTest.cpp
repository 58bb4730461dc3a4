#include "core/input/LayoutKeySearch.h"

#include <gtest/gtest.h>

#include <map>

namespace velmo {
namespace {

using enum HotkeyModifier;
using LayoutKeySearch::CodeRange;
using LayoutKeySearch::Match;
using Modifiers = std::vector<HotkeyModifier>;

/// What each key gives in the states none, shift, option, both; "" and missing keys give nothing.
using Layout = std::map<std::uint16_t, std::array<std::string, 4>>;

const Layout layout = {
    {0, {"a", "A", "\u00E5", "\u00C5"}},
    {1, {"", "b", "", ""}},
    {2, {"2", "\"", "@", "\u0152"}},
    {3, {"i\u0307", "I", "", ""}},
    {4, {"e\u0301", "\u00C9", "", "a"}},
    {5, {"@", "", "q", "X"}},
    {6, {"", "q", "", ""}},
};

std::optional<Match> find(std::string_view character, const Modifiers& user = {},
                          CodeRange codes = {0, 128}) {
    return LayoutKeySearch::find(
        character, user, codes,
        [](std::uint16_t code, LayoutState state) -> std::optional<std::string> {
            const auto key = layout.find(code);
            if (key == layout.end())
                return std::nullopt;
            return key->second.at(static_cast<std::size_t>(state.rawValue));
        });
}

TEST(LayoutKeySearch, FindsTheKeyAndWhatElseMustBeHeld) {
    const std::tuple<std::string, Modifiers, Match> found[] = {{"a", {}, {0, {}}},
                                                               {"A", {}, {0, {}}},
                                                               {"a", {shift, alt}, {0, {}}},
                                                               {"b", {}, {1, {shift}}},
                                                               {"b", {shift}, {1, {}}},
                                                               {"@", {}, {5, {}}},
                                                               {"@", {alt}, {5, {}}},
                                                               {"\u00E5", {}, {0, {alt}}},
                                                               {"\u00C5", {}, {0, {alt}}},
                                                               {"\u00E5", {alt, cmd}, {0, {}}},
                                                               {"X", {}, {5, {shift, alt}}},
                                                               {"X", {alt}, {5, {shift}}},
                                                               {"X", {shift}, {5, {alt}}},
                                                               {"q", {}, {6, {shift}}},
                                                               {"q", {alt}, {5, {}}},
                                                               {"q", {cmd, ctrl, fn}, {6, {shift}}},
                                                               {"\u00E9", {}, {4, {}}},
                                                               {"\u00C9", {}, {4, {}}},
                                                               {"E\u0301", {shift}, {4, {}}},
                                                               {"\u0130", {}, {3, {}}}};
    for (const auto& [character, user, match] : found)
        EXPECT_EQ(find(character, user), match)
            << character << " with " << user.size() << " modifiers";
    for (const char* missing : {"B", "", "aa", "z"})
        EXPECT_FALSE(find(missing)) << missing;
    EXPECT_FALSE(find("x", {shift, alt}));
}

TEST(LayoutKeySearch, SearchesAHalfOpenRange) {
    EXPECT_FALSE(find("a", {}, {0, 0}));
    EXPECT_FALSE(find("@", {}, {3, 5}));
    EXPECT_EQ(find("@", {}, {3, 6}), (Match{5, {}}));
    EXPECT_FALSE(find("a", {}, {5, 0}));
    EXPECT_FALSE(find("z", {}, {65530, 65535}));
}

TEST(LayoutState, IsASetOfShiftAndOption) {
    const std::tuple<LayoutState, Modifiers, std::uint32_t> inSearchOrder[] = {
        {LayoutState(), {}, 0},
        {LayoutState::shift, {shift}, 2},
        {LayoutState::option, {alt}, 8},
        {LayoutState::searchOrder[3], {shift, alt}, 10}};
    for (std::size_t i = 0; i < std::size(inSearchOrder); ++i) {
        const auto& [state, modifiers, carbon] = inSearchOrder[i];
        EXPECT_EQ(LayoutState::searchOrder[i], state) << i;
        EXPECT_EQ(state.modifiers(), modifiers) << i;
        EXPECT_EQ(state.carbonModifierState(), carbon) << i;
    }
}

} // namespace
} // namespace velmo
