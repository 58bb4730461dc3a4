#include "core/terminal/SequenceReader.h"

#include "core/support/Text.h"

#include <algorithm>
#include <cstring>

namespace velmo {

namespace {

constexpr std::uint8_t cancel = 0x18;
constexpr std::uint8_t substitute = 0x1A;
constexpr std::uint8_t escape = 0x1B;
constexpr std::uint8_t bell = 0x07;
constexpr std::uint8_t erase = 0x7F;
constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

constexpr bool isControl(std::uint8_t byte) {
    return byte < 0x20;
}

constexpr bool isPrintableAscii(std::uint8_t byte) {
    return byte >= 0x20 && byte < erase;
}

/// Returns the length in bytes of a character of several bytes that begins with this one; 0 if the
/// byte can't begin one.
constexpr std::size_t lengthOfCharacter(std::uint8_t first) {
    if (first >= 0xC2 && first <= 0xDF)
        return 2;
    if (first >= 0xE0 && first <= 0xEF)
        return 3;
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

constexpr bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// Tells whether a complete two-byte character is one of U+0080 to U+009F, which some terminals
/// obey as they do ESC and a letter.
bool isC1(std::string_view character) {
    return character.size() == 2 && character[0] == '\xC2'
           && static_cast<std::uint8_t>(character[1]) < 0xA0;
}

} // namespace

void SequenceReader::read(ByteView bytes, const Sink& sink) {
    while (!bytes.empty()) {
        if (isAtRest()) {
            const auto plain = static_cast<std::size_t>(
                std::ranges::find_if_not(bytes, isPrintableAscii) - bytes.begin());
            if (plain > 0)
                sink({.kind = Kind::text, .text = textOf(bytes.first(plain))});
            bytes = bytes.subspan(plain);
            if (bytes.empty())
                return;
            if (takeCsi(bytes, sink))
                continue;
        }
        consume(bytes.front(), sink);
        bytes = bytes.subspan(1);
    }
}

void SequenceReader::readSequences(ByteView bytes, const Sink& sink) {
    while (!bytes.empty()) {
        if (state_ == State::character) {
            consume(bytes.front(), [](const Sequence& /*text*/) {});
            bytes = bytes.subspan(1);
            continue;
        }
        if (isAtRest()) {
            const void* const found = std::memchr(bytes.data(), escape, bytes.size());
            if (found == nullptr) {
                noticeCutCharacter(bytes);
                return;
            }
            bytes = bytes.subspan(
                static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data()));
            if (takeCsi(bytes, sink))
                continue;
        }
        consume(bytes.front(), sink);
        bytes = bytes.subspan(1);
    }
}

/// Removes a whole control sequence from the front and reports it, without a step for each byte,
/// since a program that draws a screen writes many such sequences. Returns false if the bytes begin
/// with anything else, or if the sequence is cut, too long, or contains a control, DEL or a byte
/// beyond ASCII.
bool SequenceReader::takeCsi(ByteView& bytes, const Sink& sink) {
    constexpr std::size_t introducer = 2; // ESC [
    if (bytes.size() <= introducer || bytes[0] != escape || bytes[1] != '[')
        return false;
    std::size_t last = introducer;
    while (last < bytes.size() && bytes[last] >= ' ' && bytes[last] < '@')
        ++last;
    if (last == bytes.size() || !isPrintableAscii(bytes[last]) || last - introducer >= maxSequence)
        return false;
    sink({.kind = Kind::csi, .text = textOf(bytes.subspan(introducer, last + 1 - introducer))});
    bytes = bytes.subspan(last + 1);
    return true;
}

/// Enters `State::character` if the text ends within a character.
void SequenceReader::noticeCutCharacter(ByteView text) {
    const ByteView tail = text.last(std::min<std::size_t>(text.size(), 3));
    for (std::size_t i = tail.size(); i-- > 0;) {
        if (isContinuation(tail[i]))
            continue;
        if (lengthOfCharacter(tail[i]) > tail.size() - i) {
            begin(State::character);
            characterBytes_ = lengthOfCharacter(tail[i]);
            collected_ = textOf(tail.subspan(i));
        }
        return;
    }
}

void SequenceReader::consume(std::uint8_t byte, const Sink& sink) {
    switch (state_) {
    case State::ground:
        takeInGround(byte, sink);
        return;
    case State::character:
        takeInCharacter(byte, sink);
        return;
    case State::oscEscape:
        if (byte == '\\') {
            finish(Kind::osc, sink);
            return;
        }
        begin(State::escape); // a new sequence has broken the string off
        break;
    case State::escape:
    case State::csi:
    case State::osc:
    case State::string:
        break;
    }
    if (byte == cancel || byte == substitute) {
        finish(Kind::dropped, sink);
        return;
    }
    if (byte == escape) {
        if (state_ == State::osc)
            state_ = State::oscEscape;
        else
            begin(State::escape);
        return;
    }
    if (state_ == State::escape)
        takeInEscape(byte, sink);
    else if (state_ == State::csi)
        takeInCsi(byte, sink);
    else if (state_ == State::osc)
        takeInOsc(byte, sink);
}

void SequenceReader::takeInGround(std::uint8_t byte, const Sink& sink) {
    const char text = static_cast<char>(byte);
    if (byte == escape) {
        begin(State::escape);
    } else if (isControl(byte)) {
        sink({.kind = Kind::control, .text = {&text, 1}});
    } else if (isPrintableAscii(byte)) {
        sink({.kind = Kind::text, .text = {&text, 1}});
    } else if (const std::size_t length = lengthOfCharacter(byte); length > 0) {
        begin(State::character);
        characterBytes_ = length;
        collect(byte);
    } else if (byte >= 0xA0) {
        sink({.kind = Kind::text, .text = replacement});
    } else {
        sink({.kind = Kind::dropped, .text = {&text, 1}}); // DEL, or a C1 control of eight bits
    }
}

void SequenceReader::takeInCharacter(std::uint8_t byte, const Sink& sink) {
    if (!isContinuation(byte)) {
        begin(State::ground);
        sink({.kind = Kind::text, .text = replacement});
        consume(byte, sink);
        return;
    }
    collect(byte);
    if (collected_.size() < characterBytes_)
        return;
    if (!Text::isValidUtf8(collected_))
        collected_ = replacement;
    finish(isC1(collected_) ? Kind::dropped : Kind::text, sink);
}

/// Handles a byte that does not belong to the sequence around it: a control is reported and the
/// sequence goes on, a byte beyond ASCII breaks the sequence off. Returns false for any other byte.
bool SequenceReader::takenOutside(std::uint8_t byte, const Sink& sink) {
    if (isControl(byte)) {
        const char control = static_cast<char>(byte);
        sink({.kind = Kind::control, .text = {&control, 1}});
        return true;
    }
    if (byte <= erase)
        return false;
    begin(State::ground);
    consume(byte, sink);
    return true;
}

void SequenceReader::takeInEscape(std::uint8_t byte, const Sink& sink) {
    constexpr std::string_view strings = "PX^_"; // DCS, SOS, PM and APC
    const bool isFirst = collected_.empty();
    if (takenOutside(byte, sink))
        return;
    if (isFirst && byte == '[') {
        begin(State::csi);
    } else if (isFirst && byte == ']') {
        begin(State::osc);
    } else if (isFirst && strings.contains(static_cast<char>(byte))) {
        begin(State::string);
    } else if (byte != erase) {
        collect(byte);
        if (byte >= '0')
            finish(Kind::escape, sink);
    }
}

void SequenceReader::takeInCsi(std::uint8_t byte, const Sink& sink) {
    if (takenOutside(byte, sink) || byte == erase)
        return;
    collect(byte);
    if (byte >= '@')
        finish(Kind::csi, sink);
}

void SequenceReader::takeInOsc(std::uint8_t byte, const Sink& sink) {
    if (byte == bell)
        finish(Kind::osc, sink);
    else if (!isControl(byte))
        collect(byte);
}

void SequenceReader::begin(State state) {
    state_ = state;
    collected_.clear();
    isTooLong_ = false;
}

void SequenceReader::collect(std::uint8_t byte) {
    if (collected_.size() < maxSequence)
        collected_.push_back(static_cast<char>(byte));
    else
        isTooLong_ = true;
}

void SequenceReader::finish(Kind kind, const Sink& sink) {
    state_ = State::ground;
    sink({.kind = isTooLong_ ? Kind::dropped : kind, .text = collected_});
    begin(State::ground);
}

} // namespace velmo
