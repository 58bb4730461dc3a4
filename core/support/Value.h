#pragma once

#include "core/support/Bytes.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmo {

enum class ValueKind { other, boolean, integer, real, text, data, array, dictionary };

/// A value from a property list or a dictionary of the platform: preferences, a row of the window
/// list. It owns all that it holds.
///
///     const Value entry = Value::Dictionary{{"enabled", true}, {"parameters", Value::Array{1,
///     2}}};
///
/// The platform keeps a boolean and every number in one box and converts freely; here the kinds are
/// told apart, and a reader says in its comment what it converts. Every reader answers absent (or a
/// null pointer, where it would refer to a part of the value) for the other kinds.
class Value {
public:
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    /// A value of a kind that nobody reads, such as a date: it keeps its place in an array.
    Value() = default;

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

    /// A real or an integer, never a boolean; may be infinite or "not a number".
    [[nodiscard]] std::optional<double> real() const;

    /// Whatever the platform would read as an integer: a boolean as 1 or 0, a real without its
    /// fraction. Absent for a real that is not finite or, so cut, lies outside 64 bits.
    [[nodiscard]] std::optional<std::int64_t> number() const;

    /// Whatever the platform would read as a boolean: a number is true unless it is 0. Absent for a
    /// real that is not finite.
    [[nodiscard]] std::optional<bool> truth() const;

    /// May hold NUL, or bytes that are not UTF-8 if its source did not check.
    [[nodiscard]] std::optional<std::string_view> text() const;
    [[nodiscard]] std::optional<ByteView> data() const;

    [[nodiscard]] const Array* array() const;
    [[nodiscard]] const Dictionary* dictionary() const;

    /// The dictionary's value under this name; null also for a value that is no dictionary.
    [[nodiscard]] const Value* member(std::string_view name) const;

    /// The same kinds and contents: 1, 1.0 and true all differ.
    bool operator==(const Value& other) const;

private:
    using Content = std::variant<std::monostate, bool, std::int64_t, double, std::string, Bytes,
                                 Array, Dictionary>;

    template<std::integral T>
    static Content integerOrReal(T value) {
        if (std::in_range<std::int64_t>(value))
            return static_cast<std::int64_t>(value);
        return static_cast<double>(value);
    }

    Content content_;
};

/// The dictionary's value under this name, or null; null too when there is no dictionary.
const Value* member(const Value::Dictionary* dictionary, std::string_view name);

} // namespace velmo
