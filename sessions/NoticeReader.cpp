#include "sessions/NoticeReader.h"

#include "core/support/Ascii.h"
#include "core/terminal/AttachLabels.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

constexpr char bell = 0x07;
constexpr char cancel = 0x18;
constexpr char substitute = 0x1A;
constexpr char escape = 0x1B;

/// Tells whether the text of an OSC 9 is a number and its parameters: some terminals draw progress
/// by these, which no person is asked for.
bool isCommand(std::string_view text) {
    const std::string_view first = text.substr(0, text.find(';'));
    return !first.empty() && first.size() <= 2 && std::ranges::all_of(first, Ascii::isDigit);
}

/// Returns the text of the notice that an OSC sends; empty for any other OSC.
std::string textOfOsc(std::string_view osc) {
    constexpr std::string_view plain = "9;";
    constexpr std::string_view titled = "777;notify;";
    if (osc.starts_with(plain) && !isCommand(osc.substr(plain.size())))
        return std::string(osc.substr(plain.size()));
    if (!osc.starts_with(titled))
        return "";
    const std::string_view both = osc.substr(titled.size());
    const std::size_t end = both.find(';');
    if (end == std::string_view::npos || end + 1 == both.size())
        return std::string(both.substr(0, end));
    return std::string(both.substr(0, end)).append(": ").append(both.substr(end + 1));
}

} // namespace

std::optional<NoticeReader::Notice> NoticeReader::read(ByteView bytes) {
    found_.reset();
    std::string_view rest = textOf(bytes);
    hasBells_ = rest.contains(bell);
    while (true) {
        if (state_ == State::ground)
            rest = afterText(rest);
        if (rest.empty())
            return std::exchange(found_, std::nullopt);
        consume(rest.front());
        rest.remove_prefix(1);
    }
}

/// Returns the output from the next ESC on. A BEL in the text before that is a bell.
std::string_view NoticeReader::afterText(std::string_view output) {
    const std::string_view text = output.substr(0, output.find(escape));
    if (hasBells_ && std::ranges::count(text, bell) > 0)
        note("");
    return output.substr(text.size());
}

void NoticeReader::consume(char byte) {
    switch (state_) {
    case State::ground: // an ESC
        state_ = State::escape;
        break;
    case State::escape:
        takeInEscape(byte);
        break;
    case State::osc:
        takeInOsc(byte);
        break;
    case State::string:
        if (byte == escape)
            state_ = State::stringEscape;
        else if (byte == cancel || byte == substitute)
            state_ = State::ground;
        break;
    case State::oscEscape:
        if (byte == '\\')
            finishOsc();
        else
            takeInEscape(byte);
        break;
    case State::stringEscape:
        if (byte == '\\')
            state_ = State::ground;
        else
            takeInEscape(byte);
        break;
    }
}

void NoticeReader::takeInEscape(char byte) {
    constexpr std::string_view strings = "PX^_"; // DCS, SOS, PM, APC
    state_ = State::ground;
    if (byte == ']') {
        state_ = State::osc;
        osc_.clear();
        isTooLong_ = false;
    } else if (strings.contains(byte)) {
        state_ = State::string;
    } else if (byte == escape) {
        state_ = State::escape;
    } else if (byte == bell) {
        note("");
    }
}

void NoticeReader::takeInOsc(char byte) {
    if (byte == bell) {
        finishOsc();
    } else if (byte == escape) {
        state_ = State::oscEscape;
    } else if (byte == cancel || byte == substitute) {
        state_ = State::ground;
    } else if (osc_.size() == maxOsc) {
        isTooLong_ = true;
    } else {
        osc_ += byte;
    }
}

void NoticeReader::finishOsc() {
    state_ = State::ground;
    const std::string text = isTooLong_ ? "" : PtyAttach::sanitizeLabel(textOfOsc(osc_));
    if (!text.empty())
        note(text);
}

/// A bell does not hide a notice.
void NoticeReader::note(const Notice& notice) {
    if (!found_ || !notice.empty())
        found_ = notice;
}

} // namespace velmo
