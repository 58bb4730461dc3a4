#include "core/input/LayoutKeySearch.h"

#include <gmock/gmock.h>

#include <map>

namespace velmo {
namespace {

using enum HotkeyModifier;
using LayoutKeySearch::CodeRange;
using LayoutKeySearch::Match;
using testing::ElementsAre;
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
    struct Case {
        std::string character;
        Modifiers user;
        std::optional<Match> match;
    };

    const Case cases[] = {
        {"a", {}, Match{0, {}}},
        {"A", {}, Match{0, {}}},
        {"b", {}, Match{1, {shift}}},
        {"B", {}, {}},
        {"b", {shift}, Match{1, {}}},
        {"@", {}, Match{5, {}}},
        {"@", {alt}, Match{5, {}}},
        {"\u00E5", {}, Match{0, {alt}}},
        {"\u00C5", {}, Match{0, {alt}}},
        {"\u00E5", {alt, cmd}, Match{0, {}}},
        {"X", {}, Match{5, {shift, alt}}},
        {"X", {alt}, Match{5, {shift}}},
        {"X", {shift}, Match{5, {alt}}},
        {"x", {shift, alt}, {}},
        {"q", {}, Match{6, {shift}}},
        {"q", {alt}, Match{5, {}}},
        {"q", {cmd, ctrl, fn}, Match{6, {shift}}},
        {"a", {shift, alt}, Match{0, {}}},
        {"\u00E9", {}, Match{4, {}}},
        {"\u00C9", {}, Match{4, {}}},
        {"E\u0301", {shift}, Match{4, {}}},
        {"\u0130", {}, Match{3, {}}},
        {"", {}, {}},
        {"aa", {}, {}},
        {"z", {}, {}},
    };
    for (const auto& [character, user, match] : cases)
        EXPECT_EQ(find(character, user), match)
            << character << " with " << user.size() << " modifiers";
}

TEST(LayoutKeySearch, SearchesAHalfOpenRange) {
    EXPECT_FALSE(find("a", {}, {0, 0}));
    EXPECT_FALSE(find("@", {}, {3, 5}));
    EXPECT_EQ(find("@", {}, {3, 6}), (Match{5, {}}));
    EXPECT_FALSE(find("a", {}, {5, 0}));
    EXPECT_FALSE(find("z", {}, {65530, 65535}));
}

TEST(LayoutState, IsASetOfShiftAndOption) {
    const auto [none, shifted, optioned, both] = LayoutState::searchOrder;
    EXPECT_EQ(shifted, LayoutState::shift);
    EXPECT_EQ(optioned, LayoutState::option);
    EXPECT_THAT(none.modifiers(), ElementsAre());
    EXPECT_THAT(shifted.modifiers(), ElementsAre(shift));
    EXPECT_THAT(optioned.modifiers(), ElementsAre(alt));
    EXPECT_THAT(both.modifiers(), ElementsAre(shift, alt));
    EXPECT_EQ(none.carbonModifierState(), 0U);
    EXPECT_EQ(shifted.carbonModifierState(), 2U);
    EXPECT_EQ(optioned.carbonModifierState(), 8U);
    EXPECT_EQ(both.carbonModifierState(), 10U);
}

} // namespace
} // namespace velmo
