#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Finds in a program's output what asks for a person: a bell, and the notices that terminals show
/// on the desktop, OSC 9 (a text) and OSC 777 (a title and a text). Accepts any bytes, cut
/// anywhere, at the speed of a search for ESC.
class NoticeReader {
public:
    static constexpr std::size_t maxOsc = 1024; ///< bytes; a longer sequence is no notice

    /// What asks for a person: the text of a notice, or an empty text for a bell.
    using Notice = std::string;

    /// Reads on and returns the last notice in these bytes, else an empty text if a bell is among
    /// them; absent without either. The text is as `PtyAttach::sanitizeLabel` returns it.
    std::optional<Notice> read(ByteView bytes);

private:
    enum class State : std::uint8_t { ground, escape, osc, oscEscape, string, stringEscape };

    std::string_view afterText(std::string_view output);
    void consume(char byte);
    void takeInEscape(char byte);
    void takeInOsc(char byte);
    void finishOsc();
    void note(const Notice& notice);

    State state_ = State::ground;
    std::string osc_;
    bool isTooLong_ = false;
    bool hasBells_ = false; ///< the bytes under way contain a BEL
    std::optional<Notice> found_;
};

} // namespace velmo
