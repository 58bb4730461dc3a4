#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/ControlSequence.h"
#include "core/terminal/SequenceReader.h"

#include <bitset>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Follows what a program sets on its terminal and leaves set, so that another terminal can be set
/// the same way, or the same terminal be set back: screen, cursor, mouse, focus and paste modes,
/// keypad, keyboard enhancements, scrolling region, character set, palette, folder and title.
/// Following costs about as much as a search for ESC.
class TerminalModes {
public:
    void follow(ByteView output);

    /// Follows one piece of output, for a caller that reads the pieces itself.
    void obey(const SequenceReader::Sequence& sequence);

    /// Tells whether the output so far ends outside of any sequence.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    /// Returns the sequences that bring a terminal from its state after a reset to this state; ""
    /// if the two are the same. Modes that a terminal may answer are left out, and so is what moves
    /// the cursor or changes what is written: the alternate screen, the scrolling region, the
    /// origin of rows there, and the character set.
    [[nodiscard]] std::string sequences() const;

    /// Returns the sequences that bring a terminal from this state back to its state after a reset.
    /// The sequences leave the title alone, and what `PtyAttach::reset` sets in any case: the
    /// attributes, the keypad and the last of the keyboard enhancements. The cursor stays where it
    /// is on the main screen, or goes to the last line where that is not possible.
    [[nodiscard]] std::string undo() const;

    /// Returns whether the program has asked for focus reports.
    [[nodiscard]] bool reportsFocus() const;

private:
    void obeyEscape(std::string_view escape);
    void obeyCsi(const ControlSequence::Csi& csi);
    void setModes(const ControlSequence::Csi& csi);
    void setKeyboard(const ControlSequence::Csi& csi);
    void setKeyModifiers(const ControlSequence::Csi& csi);
    void setColoursAndFolder(std::string_view osc);
    void resetColours(std::string_view command, std::string_view numbers);
    [[nodiscard]] bool isOnAlternateScreen() const;
    void softReset();

    struct State {
        std::bitset<ControlSequence::modes.size()> unusual; ///< modes not as after a reset
        bool inserts = false;
        bool isKeypadOfApplication = false;
        std::vector<std::int32_t> keyboard; ///< enhancements pushed; the last is in force
        std::map<std::int32_t, std::string> keyModifiers; ///< how modified keys are spelt: values
        std::string charset;     ///< the designation of G0, without its ESC
        std::string region;      ///< the scrolling region, without its ESC [
        std::string cursorStyle; ///< likewise
        std::map<std::string, std::string, std::less<>> colours; ///< by what sets them: "4;7", "11"
        std::string folder;                                      ///< as an address
        std::string title;
    };

    SequenceReader reader_;
    State state_;
};

} // namespace velmo
