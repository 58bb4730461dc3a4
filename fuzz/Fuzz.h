#pragma once

#include "core/support/Bytes.h"
#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the fuzz targets share. A target is one source file with one `Target`, which hands
/// arbitrary bytes to one parser and checks what must be true of every result.
namespace velmo::Fuzz {

/// Ends the process, which is a finding, unless the condition is true.
void require(bool holds, std::source_location at = std::source_location::current());

/// The bytes of one run, which are read from the front. Texts are lines, so that seeds can be read
/// and written by hand. At the end of the input a byte reads as 0 and a text as "".
class Input {
public:
    explicit Input(ByteView bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isEmpty() const { return bytes_.empty(); }

    std::uint8_t byte();

    bool flag() { return byte() % 2 != 0; }

    std::string_view line(); ///< without its line feed
    ByteView restBytes();
    std::string_view rest();

    /// Returns the rest, one word a line.
    std::vector<std::string> words();

private:
    ByteView bytes_;
};

/// A source file's check, registered under the file's name before `main` runs.
class Target {
public:
    using Check = void (*)(Input input); ///< called once for every input

    Target(std::string_view name, Check check) noexcept
        : name_(name), check_(check), next_(std::exchange(first, this)) {}

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void run(ByteView bytes) const { check_(Input(bytes)); }

    /// Returns the target of that name, or null if the name is unknown.
    static const Target* find(std::string_view name);

    /// Returns one of the targets; a program of the fuzzer has only one.
    static const Target& any() { return *first; }

private:
    std::string_view name_;
    Check check_;
    const Target* next_;
    static const Target* first;
};

/// Returns the same document spelt differently: members in reverse order, no blanks, no needless
/// escapes, reals in scientific form.
std::string respelt(const JsonValue& value);
std::string respelt(const JsonObject& object);

/// Requires that a parser of JSON refuses a text that is not JSON, and that the spelling of a
/// document does not change the result. `limit` is the number of bytes beyond which the parser
/// refuses any text.
template<class Parse>
void requireSpellingIsIgnored(std::string_view json, const Parse& parse,
                              std::size_t limit = std::string_view::npos) {
    const auto document = JsonDocument::parse(json);
    if (!document || json.size() > limit) {
        require(!parse(json));
        return;
    }
    const std::string other = respelt(document->root());
    require(other.size() > limit || parse(json) == parse(other));
}

/// Requires that a record is read back as it was written, and that the spelling of its JSON does
/// not change it.
template<Record R>
void requireRecord(std::string_view json) {
    const auto decode = [](std::string_view text) { return decodeRecord<R>(text); };
    requireSpellingIsIgnored(json, decode);
    if (const auto record = decode(json))
        require(decode(encodeJson(*record).value()) == record);
}

} // namespace velmo::Fuzz
