#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>

/// Writes JSON values without spaces, the exact bytes that the host's other processes read.
namespace velmo {

enum class EncodingError {
    nonFiniteNumber, ///< JSON has no way to write infinity or "not a number"
    noJsonForm,      ///< nor raw data, or a value of a kind without a reader
};

/// How a slash is written: as "\/", which lets a line stand inside HTML, or plainly.
enum class Slashes { escaped, plain };

/// Appends values to a text. Objects and arrays are composed by the caller (see Record.h).
class JsonWriter {
public:
    explicit JsonWriter(std::string& out, Slashes slashes = Slashes::escaped)
        : out_(out), slashes_(slashes) {}

    /// Escapes quotes and backslashes, writes control characters as \b \f \n \r \t or \u00xx, and
    /// U+FFFD for ill-formed UTF-8.
    void text(std::string_view text);

    void boolean(bool value) { out_ += value ? "true" : "false"; }

    void integer(std::integral auto value) { appendNumber(value); }

    /// Writes the shortest digits that read back the same, so that 800 is "800" and not "800.0".
    /// The notation is fixed for 0 and from 1e-4 up to 2^54, else scientific.
    void real(std::floating_point auto value);

    /// Appends bytes that are JSON already: punctuation, and keys that need no escaping.
    void raw(std::string_view json) { out_ += json; }

    /// Remembers that something could not be written. What was written is then of no use.
    void fail(EncodingError error) { error_ = error; }

    [[nodiscard]] std::optional<EncodingError> error() const { return error_; }

    [[nodiscard]] std::string& out() { return out_; }

private:
    template<class Number, class... Format>
    void appendNumber(Number value, Format... format);
    void appendEscape(unsigned char byte);

    std::string& out_;
    Slashes slashes_;
    std::optional<EncodingError> error_;
};

extern template void JsonWriter::real(float);
extern template void JsonWriter::real(double);

template<class Number, class... Format>
void JsonWriter::appendNumber(Number value, Format... format) {
    char digits[64];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value, format...);
    out_.append(digits, end);
}

} // namespace velmo
