#include "core/terminal/ReplayFilter.h"

#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "core/terminal/ControlSequence.h"

#include <algorithm>
#include <array>

namespace velmo {

namespace {

using ControlSequence::Csi;
using Kind = SequenceReader::Kind;

/// Backspace, tab, line feed, vertical tab, form feed, carriage return, shift out and in.
constexpr std::string_view controls = "\b\t\n\v\f\r\x0E\x0F";

/// Save and restore the cursor, keypads, index, next line, set tab, reverse index.
constexpr std::string_view plainEscapes = "78=>DEHM";

/// What a reset (ESC c) becomes: the modes, the keyboard, the scrolling region, the character set
/// and the attributes that it would reset, and a clear screen. The reset itself would erase the
/// lines that have scrolled off the top of the user's terminal.
constexpr std::string_view softReset =
    "\033[?1049;1;5;6;9;12;45;66;69;1000;1002;1003;1005;1006;1007;1015;1016;2004l\033[?7;25h\033[4l"
    "\033>\033[<9u\033[>m\033[r\033(B\x0F\033[m\033[H\033[2J";

/// Character sets for G0 to G3: ESC, one of the designators, one of the sets.
constexpr std::string_view designators = "()*+";
constexpr std::string_view charsets = "AB012";

/// Finals of sequences that have numbers and neither marker nor intermediates. `T` is allowed with
/// one number only: with more it would make the terminal follow the mouse. `J` is allowed if it
/// erases the screen, and not the lines that have scrolled off its top.
constexpr std::string_view plainFinals = "ABCDEFGHIJKLMPSTXZ@`abdefgmrsu";

struct Form {
    std::string_view marker;
    std::string_view intermediates;
    char final;
};

/// The allowed sequences of other forms.
constexpr auto otherForms = std::to_array<Form>({
    {.marker = "?", .intermediates = "", .final = 'J'},  // erase what is not protected
    {.marker = "?", .intermediates = "", .final = 'K'},  //
    {.marker = ">", .intermediates = "", .final = 'u'},  // keyboard enhancements: push,
    {.marker = "<", .intermediates = "", .final = 'u'},  //   pop
    {.marker = "=", .intermediates = "", .final = 'u'},  //   and set
    {.marker = ">", .intermediates = "", .final = 'm'},  // how keys with modifiers are spelt
    {.marker = "", .intermediates = " ", .final = 'q'},  // shape of the cursor
    {.marker = "", .intermediates = " ", .final = '@'},  // shift left
    {.marker = "", .intermediates = " ", .final = 'A'},  // shift right
    {.marker = "", .intermediates = "!", .final = 'p'},  // soft reset
    {.marker = "", .intermediates = "\"", .final = 'q'}, // protect from erasing
    {.marker = "", .intermediates = "$", .final = 'v'},  // copy a rectangle,
    {.marker = "", .intermediates = "$", .final = 'x'},  //   fill it
    {.marker = "", .intermediates = "$", .final = 'z'},  //   and erase it
});

constexpr std::size_t maxParameters = 64; // bytes

void passedOnAsItIs(const SequenceReader::Sequence& /*sequence*/) {
}

bool isOneOf(std::string_view allowed, char c) {
    return allowed.contains(c);
}

bool isAllowedEscape(std::string_view text) {
    if (text.size() == 1)
        return isOneOf(plainEscapes, text[0]);
    return text.size() == 2
           && ((isOneOf(designators, text[0]) && isOneOf(charsets, text[1])) || text == "#8");
}

bool isAllowedForm(const Csi& csi) {
    constexpr std::string_view erasableParts = "012"; // below, above, all
    if (csi.final == 'J' && !csi.parameters.empty()
        && !(csi.parameters.size() == 1 && isOneOf(erasableParts, csi.parameters.front())))
        return false;
    if (csi.marker.empty() && csi.intermediates.empty())
        return isOneOf(plainFinals, csi.final)
               && (csi.final != 'T' || !csi.parameters.contains(';'));
    return std::ranges::any_of(otherForms, [&](const Form& form) {
        return form.marker == csi.marker && form.intermediates == csi.intermediates
               && form.final == csi.final;
    });
}

/// Returns the sequence with its known modes only; "" if it has none.
std::string knownModes(const Csi& csi) {
    constexpr auto ansiModes = std::to_array<std::int32_t>({4, 20}); // insert, new line
    std::string kept;
    for (const std::int32_t number : csi.numbers()) {
        const auto* const mode = ControlSequence::findMode(number);
        const bool isAllowed = csi.marker == "?"
                                   ? mode != nullptr && mode->isReplayed
                                   : std::ranges::find(ansiModes, number) != ansiModes.end();
        if (isAllowed)
            kept.append(kept.empty() ? "" : ";").append(std::to_string(number));
    }
    return kept.empty() ? "" : "\033[" + std::string(csi.marker) + kept + csi.final;
}

std::string shownCsi(std::string_view text) {
    const auto csi = Csi::parse(text);
    if (!csi || csi->parameters.size() > maxParameters)
        return "";
    const bool isOfModes = csi->final == 'h' || csi->final == 'l';
    if (isOfModes && csi->intermediates.empty() && (csi->marker.empty() || csi->marker == "?"))
        return knownModes(*csi);
    return isAllowedForm(*csi) ? "\033[" + std::string(text) : "";
}

} // namespace

std::string shownAgain(const SequenceReader::Sequence& sequence) {
    switch (sequence.kind) {
    case Kind::text:
        return std::string(sequence.text);
    case Kind::control:
        return isOneOf(controls, sequence.text[0]) ? std::string(sequence.text) : "";
    case Kind::escape:
        if (sequence.text == "c")
            return std::string(softReset);
        return isAllowedEscape(sequence.text) ? std::string("\033").append(sequence.text) : "";
    case Kind::csi:
        return shownCsi(sequence.text);
    case Kind::osc:
        if (ControlSequence::isMarkOrColour(sequence.text))
            return "\033]" + std::string(sequence.text) + "\033\\";
        return ControlSequence::titleOf(sequence.text)
            .transform([](const std::string& title) { return PtyAttach::titleSequence(title); })
            .value_or("");
    case Kind::dropped:
        break;
    }
    return "";
}

void ReplayFilter::pass(ByteView output, Bytes& shown) {
    reader_.read(output, [&](const SequenceReader::Sequence& sequence) {
        if (sequence.kind == Kind::text) {
            const ByteView text = bytesOf(sequence.text);
            shown.insert(shown.end(), text.begin(), text.end());
            return;
        }
        note(sequence);
        const std::string kept = shownAgain(sequence);
        const ByteView bytes = bytesOf(kept);
        shown.insert(shown.end(), bytes.begin(), bytes.end());
    });
}

void ReplayFilter::follow(ByteView output) {
    reader_.readSequences(output,
                          [this](const SequenceReader::Sequence& sequence) { note(sequence); });
}

void ReplayFilter::note(const SequenceReader::Sequence& sequence) {
    if (sequence.kind == Kind::escape && sequence.text == "c")
        reportsFocus_ = false;
    if (sequence.kind != Kind::csi || !sequence.text.starts_with('?'))
        return;
    const auto csi = Csi::parse(sequence.text);
    if (csi && csi->intermediates.empty() && (csi->final == 'h' || csi->final == 'l')
        && std::ranges::count(csi->numbers(), ControlSequence::focusReports) > 0)
        reportsFocus_ = csi->final == 'h';
}

std::size_t ReplayFilter::lengthToRest(ByteView output) const {
    SequenceReader ahead = reader_;
    std::size_t length = 0;
    while (length < output.size() && !ahead.isAtRest())
        ahead.read(output.subspan(length++, 1), passedOnAsItIs);
    return length;
}

} // namespace velmo
