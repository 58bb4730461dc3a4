#include "core/support/JsonWriter.h"

#include "core/support/Text.h"

#include <cmath>

namespace velmo {

namespace {

constexpr double fixedNotationEnd = 0x1p54;
constexpr double fixedNotationStart = 1e-4;

bool isPlain(unsigned char byte, Slashes slashes) {
    if (byte == '/')
        return slashes == Slashes::plain;
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

} // namespace

void JsonWriter::text(std::string_view text) {
    out_ += '"';
    while (!text.empty()) {
        std::size_t run = 0;
        while (run < text.size() && isPlain(static_cast<unsigned char>(text[run]), slashes_))
            ++run;
        out_ += text.substr(0, run);
        text.remove_prefix(run);
        if (text.empty())
            break;

        const Text::Scalar scalar = Text::firstScalar(text);
        if (scalar.value < 0x80)
            appendEscape(static_cast<unsigned char>(scalar.value));
        else if (scalar.valid)
            out_ += scalar.bytes;
        else
            Text::append(out_, scalar.value);
        text.remove_prefix(scalar.bytes.size());
    }
    out_ += '"';
}

void JsonWriter::appendEscape(unsigned char byte) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    constexpr std::string_view shortEscapes = "\"\"\\\\//\bb\ff\nn\rr\tt";
    for (std::size_t i = 0; i < shortEscapes.size(); i += 2) {
        if (static_cast<unsigned char>(shortEscapes[i]) == byte) {
            out_ += '\\';
            out_ += shortEscapes[i + 1];
            return;
        }
    }
    out_ += "\\u00";
    out_ += hexDigits[byte >> 4U];
    out_ += hexDigits[byte & 0xFU];
}

void JsonWriter::real(std::floating_point auto value) {
    const double magnitude = std::fabs(static_cast<double>(value));
    if (!std::isfinite(magnitude)) {
        fail(EncodingError::nonFiniteNumber);
        return;
    }
    const bool fixed =
        magnitude == 0 || (magnitude >= fixedNotationStart && magnitude < fixedNotationEnd);
    appendNumber(value, fixed ? std::chars_format::fixed : std::chars_format::scientific);
}

template void JsonWriter::real(float);
template void JsonWriter::real(double);

} // namespace velmo
