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
/// scrolling region, character set, colours and attributes, title. It costs a search for ESC.
class TerminalModes {
public:
    void follow(ByteView output);

    /// Tells whether the output so far ends outside of any sequence.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    /// Returns what brings a terminal that has just been reset to this state: nothing for the usual
    /// one.
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
        std::bitset<ControlSequence::modes.size()> unusual; ///< modes that are not as after a reset
        bool inserts = false;
        bool isKeypadOfApplication = false;
        std::vector<std::int32_t> keyboard; ///< enhancements that were pushed, the last in force
        std::string charset;                ///< how G0 was designated: what follows ESC
        std::string region;                 ///< of scrolling: what follows ESC [
        std::string cursorStyle;            ///< likewise
        std::string style;                  ///< the SGR sequences since the last that resets
        std::string title;
    };

    SequenceReader reader_;
    State state_;
};

} // namespace velmo
