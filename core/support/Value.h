#pragma once

#include "core/support/Bytes.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmo {

enum class ValueKind { other, null, boolean, integer, real, text, data, array, dictionary };

/// A value from a property list or a dictionary of the platform, such as preferences or a row of
/// the window list. A value owns all that it contains.
///
///     const Value entry = Value::Dictionary{{"enabled", true}, {"size", Value::Array{1, 2}}};
///     entry["enabled"].boolean();  // true
///     entry["missing"]["x"].real(); // absent
///
/// The platform keeps a boolean and every number in one box and converts freely. Here the kinds are
/// told apart, and a reader says in its comment what it converts. Every reader returns absent for
/// the other kinds, and a null pointer where it would refer to a part of the value.
class Value {
public:
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    /// Makes a value of a kind that has no reader, such as a date, which keeps its place in an
    /// array.
    Value() = default;

    explicit Value(std::nullptr_t /*null*/) : content_(nullptr) {}

    // Implicit, so that a value can be spelt as nested braces; templates for the numbers, so that
    // no pointer decays to a boolean. NOLINTBEGIN(google-explicit-constructor)
    template<std::same_as<bool> T>
    Value(T value) : content_(value) {}

    /// An integer beyond signed 64 bits becomes the real that is nearest to it, which `number`
    /// then finds out of range.
    template<std::integral T>
        requires(!std::same_as<T, bool>)
    Value(T value) : content_(integerOrReal(value)) {}

    template<std::floating_point T>
    Value(T value) : content_(static_cast<double>(value)) {}

    Value(std::string value) : content_(std::move(value)) {}

    Value(std::string_view value) : content_(std::string(value)) {}

    Value(const char* value) : content_(std::string(value)) {}

    Value(Bytes value) : content_(std::move(value)) {}

    Value(Array value) : content_(std::move(value)) {}

    Value(Dictionary value) : content_(std::move(value)) {}

    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] ValueKind kind() const { return static_cast<ValueKind>(content_.index()); }

    [[nodiscard]] std::optional<bool> boolean() const;
    [[nodiscard]] std::optional<std::int64_t> integer() const;

    /// Returns a real or an integer, but never a boolean; the result may be infinite or "not a
    /// number".
    [[nodiscard]] std::optional<double> real() const;

    /// Returns what the platform would read as an integer: a boolean as 1 or 0, a real without its
    /// fraction. A real that is not finite, or lies outside 64 bits without its fraction, is
    /// absent.
    [[nodiscard]] std::optional<std::int64_t> number() const;

    /// Returns what the platform would read as a boolean: a number is true unless it is 0. A real
    /// that is not finite is absent.
    [[nodiscard]] std::optional<bool> truth() const;

    /// Returns a text, which may contain NUL, or bytes that are not UTF-8 if its source did not
    /// check.
    [[nodiscard]] std::optional<std::string_view> text() const;
    [[nodiscard]] std::optional<ByteView> data() const;

    [[nodiscard]] const Array* array() const;
    [[nodiscard]] const Dictionary* dictionary() const;

    /// Returns the elements of an array, and none of anything else.
    [[nodiscard]] std::span<const Value> elements() const;

    /// Returns the dictionary's value under this name. If the name is missing, or this is not a
    /// dictionary, returns a value of kind `other`, for which every reader returns absent.
    const Value& operator[](std::string_view name) const;

    /// Does the same for a dictionary that may be missing (null).
    static const Value& member(const Dictionary* dictionary, std::string_view name);

    /// Tells whether kinds and contents are the same: 1, 1.0 and true all differ.
    bool operator==(const Value& other) const;

private:
    using Content = std::variant<std::monostate, std::nullptr_t, bool, std::int64_t, double,
                                 std::string, Bytes, Array, Dictionary>;

    template<std::integral T>
    static Content integerOrReal(T value) {
        if (std::in_range<std::int64_t>(value))
            return static_cast<std::int64_t>(value);
        return static_cast<double>(value);
    }

    Content content_;
};

} // namespace velmo
