#include "fuzz/Fuzz.h"

#include "core/support/JsonWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ranges>
#include <utility>

namespace velmo::Fuzz {

namespace {

/// Writes a real in scientific form, so that it stays a real: 2.0 must not become an integer.
void writeReal(JsonWriter& writer, double value) {
    std::array<char, 32> digits{};
    const auto end =
        std::to_chars(digits.begin(), digits.end(), value, std::chars_format::scientific);
    writer.raw(std::string_view(digits.begin(), end.ptr));
}

void write(JsonWriter& writer, const JsonValue& value);

// The reader bounds the nesting. NOLINTBEGIN(misc-no-recursion)
void write(JsonWriter& writer, const JsonArray& array) {
    std::string_view separator = "[";
    for (const JsonValue& element : array.elements()) {
        writer.raw(std::exchange(separator, ","));
        write(writer, element);
    }
    writer.raw(separator == "[" ? "[]" : "]");
}

void write(JsonWriter& writer, const JsonObject& object) {
    std::string_view separator = "{";
    for (const auto members = object.members();
         const JsonMember& member : members | std::views::reverse) {
        writer.raw(std::exchange(separator, ","));
        writer.text(member.name);
        writer.raw(":");
        write(writer, member.value);
    }
    writer.raw(separator == "{" ? "{}" : "}");
}

void write(JsonWriter& writer, const JsonValue& value) {
    if (const auto boolean = value.boolean())
        writer.boolean(*boolean);
    else if (const auto integer = value.integer())
        writer.integer(*integer);
    else if (const auto number = value.number()) // also an integer beyond 2^63
        writeReal(writer, *number);
    else if (value.kind() == JsonKind::real) // beyond double
        writer.raw("1e999");
    else if (const auto text = value.text())
        writer.text(*text);
    else if (const auto array = value.array())
        write(writer, *array);
    else if (const auto object = value.object())
        write(writer, *object);
    else
        writer.raw("null");
}

// NOLINTEND(misc-no-recursion)

template<class T>
std::string written(const T& value) {
    std::string text;
    JsonWriter writer(text, Slashes::plain);
    write(writer, value);
    return text;
}

} // namespace

void require(bool holds, std::source_location at) {
    if (holds)
        return;
    std::fprintf(stderr, "%s:%u: what must hold of every answer does not\n", at.file_name(),
                 static_cast<unsigned>(at.line()));
    std::abort();
}

constinit const Target* Target::first = nullptr;

const Target* Target::find(std::string_view name) {
    const Target* target = first;
    while (target != nullptr && target->name_ != name)
        target = target->next_;
    return target;
}

std::uint8_t Input::byte() {
    if (bytes_.empty())
        return 0;
    const std::uint8_t first = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return first;
}

std::string_view Input::line() {
    const std::string_view all = textOf(bytes_);
    const std::string_view line = all.substr(0, all.find('\n'));
    bytes_ = bytes_.subspan(std::min(line.size() + 1, bytes_.size()));
    return line;
}

ByteView Input::restBytes() {
    return std::exchange(bytes_, {});
}

std::string_view Input::rest() {
    return textOf(restBytes());
}

std::vector<std::string> Input::words() {
    std::vector<std::string> words;
    while (!isEmpty())
        words.emplace_back(line());
    return words;
}

std::string respelt(const JsonValue& value) {
    return written(value);
}

std::string respelt(const JsonObject& object) {
    return written(object);
}

} // namespace velmo::Fuzz

/// Runs one input. The fuzzer prescribes the name of this function.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmo::Fuzz::Target::any().run({data, size});
    return 0;
}
