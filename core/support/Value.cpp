#include "core/support/Value.h"

#include <cmath>

namespace velmo {

namespace {

template<class T, class Content>
std::optional<T> copyOf(const Content& content) {
    const T* found = std::get_if<T>(&content);
    return found == nullptr ? std::nullopt : std::optional(*found);
}

/// A real at or beyond 2^63 has no integer; -2^63 has one.
std::optional<std::int64_t> truncated(double real) {
    // Written so that "not a number" fails.
    if (!(real >= -0x1p63 && real < 0x1p63))
        return std::nullopt;
    return static_cast<std::int64_t>(real);
}

} // namespace

std::optional<bool> Value::boolean() const {
    return copyOf<bool>(content_);
}

std::optional<std::int64_t> Value::integer() const {
    return copyOf<std::int64_t>(content_);
}

std::optional<double> Value::real() const {
    if (const auto value = integer())
        return static_cast<double>(*value);
    return copyOf<double>(content_);
}

std::optional<std::int64_t> Value::number() const {
    if (const auto value = boolean())
        return *value ? 1 : 0;
    if (const auto value = integer())
        return value;
    return real().and_then(truncated);
}

std::optional<bool> Value::truth() const {
    if (const auto value = boolean())
        return value;
    const auto value = real();
    if (!value || !std::isfinite(*value))
        return std::nullopt;
    return *value != 0;
}

std::optional<std::string_view> Value::text() const {
    const auto* found = std::get_if<std::string>(&content_);
    return found == nullptr ? std::nullopt : std::optional<std::string_view>(*found);
}

std::optional<ByteView> Value::data() const {
    const auto* found = std::get_if<Bytes>(&content_);
    return found == nullptr ? std::nullopt : std::optional<ByteView>(*found);
}

const Value::Array* Value::array() const {
    return std::get_if<Array>(&content_);
}

const Value::Dictionary* Value::dictionary() const {
    return std::get_if<Dictionary>(&content_);
}

std::span<const Value> Value::elements() const {
    const Array* found = array();
    return found == nullptr ? std::span<const Value>() : std::span<const Value>(*found);
}

const Value& Value::operator[](std::string_view name) const {
    return member(dictionary(), name);
}

const Value& Value::member(const Dictionary* dictionary, std::string_view name) {
    static const Value none;
    if (dictionary == nullptr)
        return none;
    const auto found = dictionary->find(name);
    return found == dictionary->end() ? none : found->second;
}

// Spelt out: whether a defaulted one may throw would depend on itself.
bool Value::operator==(const Value& other) const {
    return content_ == other.content_;
}

} // namespace velmo
