#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/ControlSequence.h"
#include "core/terminal/SequenceReader.h"

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// Follows what a program sets on its terminal and leaves set, so that another terminal can be set
/// the same way: screen, cursor, mouse, focus and paste modes, keypad, keyboard enhancements,
/// scrolling region, character set, colours and attributes, title. Following costs about as much as
/// a search for ESC.
class TerminalModes {
public:
    void follow(ByteView output);

    /// Tells whether the output so far ends outside of any sequence.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    /// Returns the sequences that bring a terminal from its state after a reset to this state; ""
    /// if the two are the same.
    [[nodiscard]] std::string sequences() const;

private:
    void obey(const SequenceReader::Sequence& sequence);
    void obeyEscape(std::string_view escape);
    void obeyCsi(const ControlSequence::Csi& csi);
    void setModes(const ControlSequence::Csi& csi);
    void setKeyboard(const ControlSequence::Csi& csi);
    void setStyle(const ControlSequence::Csi& csi);
    void softReset();

    struct State {
        std::bitset<ControlSequence::modes.size()> unusual; ///< modes not as after a reset
        bool inserts = false;
        bool isKeypadOfApplication = false;
        std::vector<std::int32_t> keyboard; ///< enhancements pushed; the last is in force
        std::string charset;                ///< the designation of G0, without its ESC
        std::string region;                 ///< the scrolling region, without its ESC [
        std::string cursorStyle;            ///< likewise
        std::string style;                  ///< the SGR sequences since the last reset
        std::string title;
    };

    SequenceReader reader_;
    State state_;
};

} // namespace velmo
