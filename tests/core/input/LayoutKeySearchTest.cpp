#include "core/input/LayoutKeySearch.h"

#include <gtest/gtest.h>

#include <map>

namespace velmo {
namespace {

using enum HotkeyModifier;
using LayoutKeySearch::CodeRange;
using LayoutKeySearch::Match;
using Modifiers = std::vector<HotkeyModifier>;

/// The text that each key gives in the states none, shift, option, both; "" and missing keys give
/// nothing.
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
                          CodeRange codes = {.first = 0, .end = 128}) {
    return LayoutKeySearch::find(
        character, user, codes,
        [](std::uint16_t code, LayoutState state) -> std::optional<std::string> {
            const auto key = layout.find(code);
            if (key == layout.end())
                return std::nullopt;
            return key->second.at(static_cast<std::size_t>(state.rawValue));
        });
}

TEST(LayoutKeySearch, FindsTheKeyAndWhatElseMustBePressed) {
    const auto expect = [](std::string_view character, const Modifiers& user, const Match& match) {
        EXPECT_EQ(find(character, user), match) << character << ", " << user.size();
    };
    // Letter case is ignored, but not with shift. Composed and decomposed accents are equal.
    expect("A", {}, {.code = 0});
    expect("\u00C5", {}, {.code = 0, .extra = {alt}});
    expect("\u0130", {}, {.code = 3});
    expect("\u00C9", {}, {.code = 4});
    expect("E\u0301", {shift}, {.code = 4});
    // States that need no further modifier come first, and each group is in the order of search.
    expect("a", {shift, alt}, {.code = 0});
    expect("@", {alt}, {.code = 5});
    expect("q", {}, {.code = 6, .extra = {shift}});
    expect("q", {alt}, {.code = 5});
    expect("q", {cmd, ctrl, fn}, {.code = 6, .extra = {shift}});
    // A modifier that the user asked for is not extra.
    expect("\u00E5", {alt, cmd}, {.code = 0});
    expect("X", {}, {.code = 5, .extra = {shift, alt}});
    expect("X", {alt}, {.code = 5, .extra = {shift}});
    expect("X", {shift}, {.code = 5, .extra = {alt}});
    for (const char* missing : {"B", "", "aa", "z"})
        EXPECT_FALSE(find(missing)) << missing;
    EXPECT_FALSE(find("x", {shift, alt}));
}

TEST(LayoutKeySearch, SearchesAHalfOpenRange) {
    for (const CodeRange range : {CodeRange{0, 0}, {5, 0}, {3, 5}, {6, 9}, {65530, 65535}})
        EXPECT_FALSE(find("@", {}, range)) << range.first;
    EXPECT_EQ(find("@", {}, {.first = 5, .end = 6})->code, 5);
}

TEST(LayoutState, IsASetOfShiftAndOption) {
    const Modifiers modifiers[] = {{}, {shift}, {alt}, {shift, alt}};
    const std::uint32_t carbon[] = {0, 2, 8, 10};
    ASSERT_EQ(LayoutState::searchOrder.size(), 4U);
    for (int bits = 0; bits < 4; ++bits) {
        const LayoutState state = LayoutState::searchOrder[static_cast<std::size_t>(bits)];
        EXPECT_EQ(state.rawValue, bits);
        EXPECT_EQ(state.modifiers(), modifiers[bits]);
        EXPECT_EQ(state.carbonModifierState(), carbon[bits]);
    }
}

} // namespace
} // namespace velmo
