#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/// Reading JSON that comes from anywhere.
///
/// A text is either accepted whole or refused whole. Refused, wherever in the text it occurs: any
/// departure from RFC 8259, a byte-order mark, an encoding other than valid UTF-8, a member named
/// twice in one object, text after the document, nesting beyond 1024 levels, an integer beyond 64
/// bits, a real beyond double. Member names and texts are compared and handed out unescaped.
///
/// Values are views into their `JsonDocument` and must not outlive it.
namespace velmo {

class JsonObject;
class JsonArray;
struct JsonStorage;

enum class JsonKind { null, boolean, integer, real, text, array, object };

/// One value. Each reader answers absent for a value of another kind; nothing is converted, but
/// that `number` reads integers too.
class JsonValue {
public:
    [[nodiscard]] JsonKind kind() const;
    [[nodiscard]] std::optional<bool> boolean() const;

    /// A number spelt without fraction or exponent (2.0 and 2e0 are reals), within signed 64 bits.
    [[nodiscard]] std::optional<std::int64_t> integer() const;

    /// Any number; always finite.
    [[nodiscard]] std::optional<double> number() const;

    /// May hold NUL: never hand it on as a C string.
    [[nodiscard]] std::optional<std::string_view> text() const;
    [[nodiscard]] std::optional<JsonArray> array() const;
    [[nodiscard]] std::optional<JsonObject> object() const;

    /// Where the parser keeps the value; of use to Json.cpp only.
    struct Handle {
        const void* document;
        std::size_t index;
    };

    explicit JsonValue(Handle handle) : handle_(handle) {}

private:
    Handle handle_;
};

class JsonArray {
public:
    explicit JsonArray(JsonValue::Handle handle) : handle_(handle) {}

    [[nodiscard]] std::vector<JsonValue> elements() const;

private:
    JsonValue::Handle handle_;
};

struct JsonMember {
    std::string_view name;
    JsonValue value;
};

class JsonObject {
public:
    explicit JsonObject(JsonValue::Handle handle) : handle_(handle) {}

    /// Absent when there is no such member; a member that is null is there.
    [[nodiscard]] std::optional<JsonValue> member(std::string_view name) const;

    /// In the order of the text.
    [[nodiscard]] std::vector<JsonMember> members() const;

    /// Whether every member bears one of these names.
    [[nodiscard]] bool hasOnly(std::initializer_list<std::string_view> names) const;

private:
    JsonValue::Handle handle_;
};

class JsonDocument {
public:
    /// Absent when the text is refused. The text is not needed afterwards.
    static std::optional<JsonDocument> parse(std::string_view text);

    JsonDocument(JsonDocument&&) noexcept;
    JsonDocument& operator=(JsonDocument&&) noexcept;
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;
    ~JsonDocument();

    [[nodiscard]] JsonValue root() const;

    /// The root, if it is an object: `document.and_then(&JsonDocument::object)`.
    [[nodiscard]] std::optional<JsonObject> object() const { return root().object(); }

private:
    explicit JsonDocument(std::unique_ptr<JsonStorage> storage);

    std::unique_ptr<JsonStorage> storage_;
};

} // namespace velmo
