#pragma once

#include "core/support/NameTable.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// Reads JSON that comes from anywhere.
///
/// A text is either accepted whole or refused whole: refused for any departure from RFC 8259,
/// wherever in the text it occurs, and also for a byte-order mark, an encoding other than valid
/// UTF-8, a member named twice in one object, text after the document, and nesting beyond 1024
/// levels. A number that the grammar allows but that lies beyond 64 bits or beyond double does
/// not make the text invalid: the number is a value that no reader takes. Member names and texts
/// are compared and handed out unescaped.
///
/// Values are views into their `JsonDocument` and must not outlive it.
namespace velmo {

class JsonArray;
class JsonObject;
struct JsonStorage;
struct WantedMembers;

/// A number that no reader takes is of kind `real`.
enum class JsonKind { null, boolean, integer, real, text, array, object };

/// The parser's own reference to a value, kept as words so that no other file sees the parser.
class JsonReference {
    friend struct JsonParser;
    std::array<std::uintptr_t, 2> words_{};
};

/// A text, an integer or a boolean that has been read already. Small, so that a table of them is
/// quickly made.
class JsonPlainValue {
public:
    JsonPlainValue() = default;

    explicit JsonPlainValue(std::string_view text)
        : kind_(JsonKind::text),
          size_(static_cast<std::uint32_t>(text.size())),
          word_(std::bit_cast<std::uintptr_t>(text.data())) {}

    explicit JsonPlainValue(std::int64_t integer)
        : kind_(JsonKind::integer), word_(static_cast<std::uint64_t>(integer)) {}

    explicit JsonPlainValue(bool boolean) : kind_(JsonKind::boolean), word_(boolean ? 1 : 0) {}

    /// Returns the kind, which is null for a value of any other kind and for a missing one.
    [[nodiscard]] JsonKind kind() const { return kind_; }

    // The readers return the value if it is of that kind, else false, 0 or "".

    [[nodiscard]] bool boolean() const { return kind_ == JsonKind::boolean && word_ != 0; }

    [[nodiscard]] std::int64_t integer() const {
        return kind_ == JsonKind::integer ? static_cast<std::int64_t>(word_) : 0;
    }

    [[nodiscard]] std::string_view text() const {
        if (kind_ != JsonKind::text)
            return {};
        return {std::bit_cast<const char*>(static_cast<std::uintptr_t>(word_)), size_};
    }

private:
    JsonKind kind_ = JsonKind::null;
    std::uint32_t size_ = 0; ///< bytes of a text; the parser reads no document of 4 GiB
    std::uint64_t word_ = 0; ///< the integer or boolean, or where the text is
};

/// A value. Every reader returns absent for a value of another kind. Nothing is converted, except
/// that `number` reads integers too.
class JsonValue {
public:
    explicit JsonValue(JsonReference reference) : reference_(reference) {}

    [[nodiscard]] JsonKind kind() const;
    [[nodiscard]] std::optional<bool> boolean() const;

    /// Returns a number that is spelt without fraction or exponent (2.0 and 2e0 are reals) and lies
    /// within signed 64 bits.
    [[nodiscard]] std::optional<std::int64_t> integer() const;

    /// Returns any number; it is always finite.
    [[nodiscard]] std::optional<double> number() const;

    /// Returns a text, which may contain NUL and so must never be handed on as a C string.
    [[nodiscard]] std::optional<std::string_view> text() const;
    [[nodiscard]] std::optional<JsonArray> array() const;
    [[nodiscard]] std::optional<JsonObject> object() const;

private:
    JsonReference reference_;
};

class JsonArray {
public:
    explicit JsonArray(JsonReference reference) : reference_(reference) {}

    [[nodiscard]] std::vector<JsonValue> elements() const;

private:
    JsonReference reference_;
};

struct JsonMember {
    std::string_view name;
    JsonValue value;
};

class JsonObject {
public:
    explicit JsonObject(JsonReference reference) : reference_(reference) {}

    /// Returns the value of a member, or nothing if the object lacks the member. A member that is
    /// null counts as there.
    [[nodiscard]] std::optional<JsonValue> member(std::string_view name) const;

    // The readers return the member's value as the reader of the same name in `JsonValue` does, and
    // nothing if the object lacks the member.
    [[nodiscard]] std::optional<bool> boolean(std::string_view name) const;
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) const;
    [[nodiscard]] std::optional<std::string_view> text(std::string_view name) const;
    [[nodiscard]] std::optional<JsonObject> object(std::string_view name) const;

    /// Returns all members in the order of the text.
    [[nodiscard]] std::vector<JsonMember> members() const;

    /// Returns the number of members.
    [[nodiscard]] std::size_t size() const;

private:
    JsonReference reference_;
};

class JsonDocument {
public:
    /// Parses a text; absent if it is refused. The text is not needed afterwards.
    static std::optional<JsonDocument> parse(std::string_view text);

    /// Does the same and, where the root is an object, reads the members of these names in the walk
    /// that parsing takes anyway. `found` has a place for each name. A place stays as it is if
    /// the member is missing, and all places are to be ignored if the text is refused.
    static std::optional<JsonDocument> parseAndFind(std::string_view text, const NameTable& names,
                                                    std::span<JsonPlainValue> found);

    JsonDocument(JsonDocument&&) noexcept;
    JsonDocument& operator=(JsonDocument&&) noexcept;
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;
    ~JsonDocument();

    [[nodiscard]] JsonValue root() const;

    /// Returns the root if it is an object: `document.and_then(&JsonDocument::object)`.
    [[nodiscard]] std::optional<JsonObject> object() const { return root().object(); }

private:
    explicit JsonDocument(std::unique_ptr<JsonStorage> storage);

    static std::optional<JsonDocument> parseWith(std::string_view text,
                                                 const WantedMembers* wanted);

    std::unique_ptr<JsonStorage> storage_;
};

} // namespace velmo
