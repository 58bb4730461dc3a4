#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace velmo {

/// Splits a program's output into text and control sequences, as the state machine of the VT500
/// series does, for a terminal in UTF-8. Accepts any bytes, cut anywhere, and keeps at most
/// `maxSequence` of them.
class SequenceReader {
public:
    static constexpr std::size_t maxSequence = 1024; ///< bytes; a longer sequence has no meaning

    enum class Kind {
        text,    ///< printable characters in UTF-8; an ill-formed one is read as U+FFFD
        control, ///< one byte, U+0000 to U+001F
        escape,  ///< the bytes after ESC: intermediates and a final byte
        csi,     ///< the bytes after ESC [: parameters, intermediates and a final byte
        osc,     ///< the bytes between ESC ] and its end, BEL or ESC backslash
        dropped, ///< anything else: DEL, C1 controls, cancelled or overlong sequences
    };

    /// A piece of the stream. The text lives until the call of the sink returns.
    struct Sequence {
        Kind kind;
        std::string_view text;
    };

    using Sink = std::function<void(const Sequence&)>;

    /// Reads on and hands every complete piece to the sink, in order. DCS and other strings are
    /// skipped, and so is a sequence that another byte breaks off.
    void read(ByteView bytes, const Sink& sink);

    /// Does the same at the speed of a search for ESC, but does not report text and controls
    /// outside of sequences.
    void readSequences(ByteView bytes, const Sink& sink);

    /// Tells whether the stream stands between two pieces, inside neither a sequence nor a
    /// character.
    [[nodiscard]] bool isAtRest() const { return state_ == State::ground; }

private:
    enum class State : std::uint8_t { ground, character, escape, csi, osc, oscEscape, string };

    static bool takeCsi(ByteView& bytes, const Sink& sink);
    void consume(std::uint8_t byte, const Sink& sink);
    void takeInGround(std::uint8_t byte, const Sink& sink);
    void takeInCharacter(std::uint8_t byte, const Sink& sink);
    void takeInEscape(std::uint8_t byte, const Sink& sink);
    void takeInCsi(std::uint8_t byte, const Sink& sink);
    bool takenOutside(std::uint8_t byte, const Sink& sink);
    void takeInOsc(std::uint8_t byte, const Sink& sink);
    void begin(State state);
    void collect(std::uint8_t byte);
    void finish(Kind kind, const Sink& sink);
    void noticeCutCharacter(ByteView text);

    State state_ = State::ground;
    std::string collected_;
    std::size_t characterBytes_ = 0; ///< length of the character that is being read
    bool isTooLong_ = false;
};

} // namespace velmo
