#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The meaning of control sequences, as far as a replay depends on it.
namespace velmo::ControlSequence {

/// The numbers of a control sequence, at least one and at most `max` of them. They lie in the
/// object and not on the heap, since a program that draws a screen writes many such sequences.
class Numbers {
public:
    static constexpr std::size_t max = 32;

    /// Adds a number. The list must not be full.
    void add(std::int32_t number) { all_[size_++] = number; }

    [[nodiscard]] std::size_t size() const { return size_; }

    [[nodiscard]] const std::int32_t* begin() const { return all_.data(); }

    [[nodiscard]] const std::int32_t* end() const { return begin() + size_; }

    [[nodiscard]] std::int32_t front() const { return all_.front(); }

    [[nodiscard]] std::int32_t operator[](std::size_t index) const { return all_[index]; }

private:
    std::array<std::int32_t, max> all_{};
    std::size_t size_ = 0;
};

/// The parts of a control sequence, after its ESC [.
struct Csi {
    std::string_view marker;        ///< "", "?", ">", "<" or "="
    std::string_view parameters;    ///< digits, ";" and ":"
    std::string_view intermediates; ///< U+0020 to U+002F
    char final = 0;

    /// Returns the parts, or nothing if the text does not have that form.
    static std::optional<Csi> parse(std::string_view text);

    /// Returns the first numbers between the ";", with 0 for one that is left out or malformed.
    [[nodiscard]] Numbers numbers() const;
};

/// A mode that CSI ? n h sets and CSI ? n l resets.
struct Mode {
    std::int32_t number;
    bool isUsuallySet = false; ///< in a terminal that has just been reset
    bool isReplayed = true;    ///< a replay may set it, since no terminal answers that
};

/// The mode in which a terminal reports that its window has got or lost the focus. Many terminals
/// also report at once when the mode is set.
inline constexpr std::int32_t focusReports = 1004;

/// The modes that are followed. Alternate screens come first, so that the other modes are set on
/// the right screen.
inline constexpr auto modes = std::to_array<Mode>({
    {.number = 47},                       // alternate screen, in three forms
    {.number = 1047},                     //
    {.number = 1049},                     //
    {.number = 1},                        // cursor keys of applications
    {.number = 5},                        // reverse video
    {.number = 6},                        // origin at the scrolling region
    {.number = 7, .isUsuallySet = true},  // wrap at the right edge
    {.number = 12},                       // blinking cursor
    {.number = 25, .isUsuallySet = true}, // cursor is shown
    {.number = 45},                       // backspace goes back to the line above
    {.number = 66},                       // keypad of applications
    {.number = 69},                       // margins at the left and right
    {.number = 9},                        // mouse: presses,
    {.number = 1000},                     //   clicks,
    {.number = 1002},                     //   drags,
    {.number = 1003},                     //   every movement,
    {.number = 1005},                     //   coordinates in UTF-8,
    {.number = 1006},                     //   long coordinates,
    {.number = 1015},                     //   coordinates in decimal,
    {.number = 1016},                     //   coordinates in pixels
    {.number = 1007},                     // wheel as cursor keys
    {.number = 2004},                     // bracketed paste
    {.number = focusReports, .isReplayed = false},
    {.number = 1001, .isReplayed = false}, // mouse: highlights, which the program has to answer
    {.number = 2026, .isReplayed = false}, // output is shown later, all at once
    {.number = 2031, .isReplayed = false}, // reports of dark and light colours
    {.number = 2048, .isReplayed = false}, // reports of the size
});

/// Returns null for a mode that is not followed.
constexpr const Mode* findMode(std::int32_t number) {
    const auto* const found = std::ranges::find(modes, number, &Mode::number);
    return found == modes.end() ? nullptr : found;
}

/// Removes the text up to the separator from its front, and the separator, and returns that text.
std::string_view takeField(std::string_view& text, char separator);

/// Returns the title that an OSC sets, sanitised; absent for any other OSC.
std::optional<std::string> titleOf(std::string_view osc);

/// Returns whether the text is an OSC that only marks or colours: a link (8), the folder (7), the
/// parts of a shell's dialogue (133), and the colours of a palette or of the screen, set (4, 10,
/// 11, 12) or reset (104, 110, 111, 112) and not asked for.
bool isMarkOrColour(std::string_view osc);

} // namespace velmo::ControlSequence
