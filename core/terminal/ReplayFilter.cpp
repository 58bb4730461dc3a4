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

/// Save and restore the cursor, keypads, index, next line, set tab, reverse index, reset.
constexpr std::string_view plainEscapes = "78=>DEHMc";

/// Character sets for G0 to G3: ESC, one of the designators, one of the sets.
constexpr std::string_view designators = "()*+";
constexpr std::string_view charsets = "AB012";

/// Finals of sequences that have numbers and neither marker nor intermediates. `T` is allowed with
/// one number only: with more it would make the terminal follow the mouse.
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
        const bool isKnown = csi.marker == "?"
                                 ? ControlSequence::findMode(number) != nullptr
                                 : std::ranges::find(ansiModes, number) != ansiModes.end();
        if (isKnown)
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
        return isAllowedEscape(sequence.text) ? std::string("\033").append(sequence.text) : "";
    case Kind::csi:
        return shownCsi(sequence.text);
    case Kind::osc:
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
        const std::string kept = shownAgain(sequence);
        const ByteView bytes = bytesOf(kept);
        shown.insert(shown.end(), bytes.begin(), bytes.end());
    });
}

void ReplayFilter::follow(ByteView output) {
    reader_.readSequences(output, passedOnAsItIs);
}

std::size_t ReplayFilter::lengthToRest(ByteView output) const {
    SequenceReader ahead = reader_;
    std::size_t length = 0;
    while (length < output.size() && !ahead.isAtRest())
        ahead.read(output.subspan(length++, 1), passedOnAsItIs);
    return length;
}

} // namespace velmo
