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

/// What the fuzz targets share. A target is one source file with one `Target`: it hands any bytes
/// at all to one parser and demands what must hold of every answer.
namespace velmo::Fuzz {

/// Ends the process, which is a finding, unless the condition holds.
void require(bool holds, std::source_location at = std::source_location::current());

/// The bytes of one run, taken off from the front. Texts are lines, so that seeds can be read and
/// written by hand; what is gone reads as 0 and "".
class Input {
public:
    explicit Input(ByteView bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isEmpty() const { return bytes_.empty(); }

    std::uint8_t byte();

    bool flag() { return byte() % 2 != 0; }

    std::string_view line(); ///< without its line feed
    ByteView restBytes();
    std::string_view rest();

    /// The rest, one word a line.
    std::vector<std::string> words();

private:
    ByteView bytes_;
};

/// A source file's check, known under the file's name from before `main` on.
class Target {
public:
    using Check = void (*)(Input input); ///< called once for every input

    Target(std::string_view name, Check check) noexcept
        : name_(name), check_(check), next_(std::exchange(first, this)) {}

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void run(ByteView bytes) const { check_(Input(bytes)); }

    /// Returns null where there is none of that name.
    static const Target* find(std::string_view name);

    /// Returns any of them: the fuzzer's programs have one each.
    static const Target& any() { return *first; }

private:
    std::string_view name_;
    Check check_;
    const Target* next_;
    static const Target* first;
};

/// The same document spelt otherwise: members in reverse order, no blanks, no needless escape,
/// reals in scientific form.
std::string respelt(const JsonValue& value);
std::string respelt(const JsonObject& object);

/// Of a parser of JSON: how a document is spelt must not change what is made of it. `limit` is the
/// number of bytes beyond which the parser refuses any text.
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

/// Of a record that is read back as it was written.
template<Record R>
void requireRecord(std::string_view json) {
    const auto decode = [](std::string_view text) { return decodeRecord<R>(text); };
    requireSpellingIsIgnored(json, decode);
    if (const auto record = decode(json))
        require(decode(encodeJson(*record).value()) == record);
}

} // namespace velmo::Fuzz
