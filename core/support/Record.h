#pragma once

#include "core/support/Json.h"
#include "core/support/JsonWriter.h"
#include "core/support/RawText.h"
#include "core/support/Value.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// Records: plain structs that list their fields once and thereby have a JSON form.
///
///     struct PowerDaemonRecord {
///         bool previous = false;
///         double since = 0;
///
///         static constexpr auto fields =
///             std::tuple{field("previous", &PowerDaemonRecord::previous),
///                        field("since", &PowerDaemonRecord::since)};
///         bool operator==(const PowerDaemonRecord&) const = default;
///     };
///
/// A record is written compactly, with its keys in ascending byte order and without absent
/// optionals. A field may be a Boolean, a number, a text, an enumeration with raw texts, a record,
/// a `Value`, or an optional, vector or string-keyed map of these.
namespace velmo {

template<class R, class M>
struct Field {
    std::string_view name; ///< the JSON key; printable ASCII without quote, backslash and slash
    M R::* member;
    bool isRequired = true; ///< a text without it is refused; optionals are never required

    /// Returns the same field, which keeps its default where the key is missing.
    [[nodiscard]] constexpr Field orDefault() const {
        return {.name = name, .member = member, .isRequired = false};
    }
};

template<class R, class M>
constexpr Field<R, M> field(std::string_view name, M R::* member) {
    return {.name = name, .member = member};
}

/// A key with which every value of the record is written, such as "type":"power" or "v":1.
template<class T>
struct ConstantField {
    std::string_view name;
    T value;
};

constexpr ConstantField<std::string_view> constant(std::string_view name, std::string_view text) {
    return {.name = name, .value = text};
}

constexpr ConstantField<std::int64_t> constant(std::string_view name, int number) {
    return {.name = name, .value = number};
}

template<class R>
concept Record = requires { R::fields; };

template<class T>
void writeJson(JsonWriter& writer, const T& value);

/// Returns the record as one JSON object, without a line feed.
template<class T>
std::expected<std::string, EncodingError> encodeJson(const T& value,
                                                     Slashes slashes = Slashes::escaped) {
    std::string line;
    JsonWriter writer(line, slashes);
    writeJson(writer, value);
    if (writer.error())
        return std::unexpected(*writer.error());
    return line;
}

/// Returns the value if it is of the kind that T is written as. An optional T reads null as absent.
template<class T>
std::optional<T> decodeJson(const JsonValue& value);

/// Does the same for a whole text, which is refused as `JsonDocument::parse` refuses it.
template<class T>
std::optional<T> decodeJsonText(std::string_view json) {
    const auto document = JsonDocument::parse(json);
    return document ? decodeJson<T>(document->root()) : std::nullopt;
}

/// Reads a record. Every required field must be there and of its kind. An optional that is missing
/// or null is absent, whatever its default. Members that are not fields are ignored, and so are
/// constants.
template<Record R>
std::optional<R> decodeRecord(const JsonObject& object);

template<Record R>
std::optional<R> decodeRecord(std::string_view json) {
    return decodeJsonText<R>(json);
}

/// Reads a record and refuses everything that is not exactly one: besides what `decodeRecord`
/// refuses, a member that is not a field, a constant that is missing or different, and null.
template<Record R>
std::optional<R> decodeRecordExactly(const JsonObject& object);

/// Does the same for a whole text of at most `maxBytes`.
template<Record R>
std::optional<R> decodeRecordExactly(std::string_view json,
                                     std::size_t maxBytes = std::string_view::npos) {
    const auto document = json.size() <= maxBytes ? JsonDocument::parse(json) : std::nullopt;
    const auto object = document.and_then(&JsonDocument::object);
    return object ? decodeRecordExactly<R>(*object) : std::nullopt;
}

/// Reads each field on its own: one that is missing or of another kind keeps its default.
template<Record R>
R decodeRecordLeniently(const JsonObject& object);

namespace detail {

template<class T>
inline constexpr bool isOptional = false;
template<class T>
inline constexpr bool isOptional<std::optional<T>> = true;

template<class T>
inline constexpr bool isConstant = false;
template<class T>
inline constexpr bool isConstant<ConstantField<T>> = true;

template<class T>
inline constexpr bool isList = false;
template<class T>
inline constexpr bool isList<std::vector<T>> = true;
template<class T, std::size_t extent>
inline constexpr bool isList<std::span<T, extent>> = true;

template<class T>
inline constexpr bool isMap = false;
template<class T, class... Rest>
inline constexpr bool isMap<std::map<std::string, T, Rest...>> = true;

template<class T>
inline constexpr bool unsupported = false;

template<Record R>
inline constexpr auto fieldNames =
    std::apply([](const auto&... listed) { return std::array{listed.name...}; }, R::fields);

/// Positions of the fields in the ascending byte order of their names.
template<Record R>
inline constexpr auto sortedFields = [] {
    std::array<std::size_t, fieldNames<R>.size()> order{};
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::ranges::sort(order, {}, [](std::size_t i) { return fieldNames<R>[i]; });
    return order;
}();

constexpr bool needsNoEscape(std::string_view name) {
    return std::ranges::all_of(
        name, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '/'; });
}

/// ,"name": as it stands before the value of the field.
template<Record R, std::size_t index>
inline constexpr auto keyText = [] {
    constexpr std::string_view name = fieldNames<R>[index];
    static_assert(needsNoEscape(name));
    std::array<char, name.size() + 4> text{',', '"'};
    std::ranges::copy(name, text.begin() + 2);
    text[name.size() + 2] = '"';
    text[name.size() + 3] = ':';
    return text;
}();

template<Record R, std::size_t index>
void writeField(JsonWriter& writer, const R& record) {
    constexpr auto& listed = std::get<index>(R::fields);
    constexpr std::string_view key(keyText<R, index>.data(), keyText<R, index>.size());
    if constexpr (isConstant<std::remove_cvref_t<decltype(listed)>>) {
        writer.raw(key);
        writeJson(writer, listed.value);
    } else {
        const auto& value = record.*listed.member;
        if constexpr (isOptional<std::remove_cvref_t<decltype(value)>>) {
            if (!value)
                return;
            writer.raw(key);
            writeJson(writer, *value);
        } else {
            writer.raw(key);
            writeJson(writer, value);
        }
    }
}

/// Every part was written with a comma before it; the first comma becomes the opening bracket.
inline void enclose(JsonWriter& writer, std::size_t start, char open, char close) {
    std::string& out = writer.out();
    if (out.size() == start)
        out += open;
    else
        out[start] = open;
    out += close;
}

template<Record R>
void writeRecord(JsonWriter& writer, const R& record) {
    const std::size_t start = writer.out().size();
    [&]<std::size_t... position>(std::index_sequence<position...>) {
        (writeField<R, sortedFields<R>[position]>(writer, record), ...);
    }(std::make_index_sequence<sortedFields<R>.size()>());
    enclose(writer, start, '{', '}');
}

template<class List>
void writeList(JsonWriter& writer, const List& list) {
    const std::size_t start = writer.out().size();
    for (const auto& element : list) {
        writer.raw(",");
        writeJson(writer, element);
    }
    enclose(writer, start, '[', ']');
}

/// A std::map by text is in ascending byte order already.
template<class Map>
void writeMap(JsonWriter& writer, const Map& map) {
    const std::size_t start = writer.out().size();
    for (const auto& [key, value] : map) {
        writer.raw(",");
        writer.text(key);
        writer.raw(":");
        writeJson(writer, value);
    }
    enclose(writer, start, '{', '}');
}

inline void writeValue(JsonWriter& writer, const Value& value) {
    if (value.kind() == ValueKind::null)
        writer.raw("null");
    else if (const auto boolean = value.boolean())
        writer.boolean(*boolean);
    else if (const auto integer = value.integer())
        writer.integer(*integer);
    else if (const auto real = value.real())
        writer.real(*real);
    else if (const auto text = value.text())
        writer.text(*text);
    else if (value.array() != nullptr)
        writeList(writer, value.elements());
    else if (const auto* const dictionary = value.dictionary())
        writeMap(writer, *dictionary);
    else
        writer.fail(EncodingError::noJsonForm);
}

/// Applies `read` to each listed field until one answers false.
template<Record R, class Read>
bool readFields(const Read& read) {
    return std::apply([&](const auto&... listed) { return (read(listed) && ...); }, R::fields);
}

template<class T>
bool isExactly(const JsonValue& value, const ConstantField<T>& constant) {
    if constexpr (std::integral<T>)
        return value.integer() == constant.value;
    else
        return value.text() == constant.value;
}

template<class T>
std::optional<T> decodeList(const JsonValue& value) {
    const auto array = value.array();
    if (!array)
        return std::nullopt;
    T list;
    for (const JsonValue& element : array->elements()) {
        auto decoded = decodeJson<typename T::value_type>(element);
        if (!decoded)
            return std::nullopt;
        list.push_back(*std::move(decoded));
    }
    return list;
}

} // namespace detail

template<class T>
void writeJson(JsonWriter& writer, const T& value) {
    if constexpr (Record<T>)
        detail::writeRecord(writer, value);
    else if constexpr (HasRawText<T>)
        writer.text(rawText(value));
    else if constexpr (std::same_as<T, bool>)
        writer.boolean(value);
    else if constexpr (std::integral<T>)
        writer.integer(value);
    else if constexpr (std::floating_point<T>)
        writer.real(value);
    else if constexpr (std::convertible_to<T, std::string_view>)
        writer.text(value);
    else if constexpr (std::same_as<T, Value>)
        detail::writeValue(writer, value);
    else if constexpr (detail::isList<T>)
        detail::writeList(writer, value);
    else if constexpr (detail::isMap<T>)
        detail::writeMap(writer, value);
    else
        static_assert(detail::unsupported<T>, "no JSON form for this type");
}

template<class T>
std::optional<T> decodeJson(const JsonValue& value) {
    if constexpr (Record<T>) {
        const auto object = value.object();
        return object ? decodeRecord<T>(*object) : std::nullopt;
    } else if constexpr (HasRawText<T>) {
        return value.text().and_then(fromRawText<T>);
    } else if constexpr (std::same_as<T, bool>) {
        return value.boolean();
    } else if constexpr (std::integral<T>) {
        const auto integer = value.integer();
        if (!integer || !std::in_range<T>(*integer))
            return std::nullopt;
        return static_cast<T>(*integer);
    } else if constexpr (std::same_as<T, double>) {
        return value.number();
    } else if constexpr (std::same_as<T, std::string>) {
        return value.text().transform([](std::string_view text) { return std::string(text); });
    } else if constexpr (detail::isOptional<T>) {
        if (value.kind() == JsonKind::null)
            return T();
        return decodeJson<typename T::value_type>(value).transform(
            [](auto decoded) { return T(std::move(decoded)); });
    } else if constexpr (detail::isList<T>) {
        return detail::decodeList<T>(value);
    } else {
        static_assert(detail::unsupported<T>, "no JSON form for this type");
    }
}

namespace detail {

/// Reads the value of a field that is there; false if it is of another kind.
template<class R, class M>
bool readField(R& record, const Field<R, M>& listed, const JsonValue& value) {
    auto decoded = decodeJson<M>(value);
    if (!decoded)
        return false;
    record.*listed.member = *std::move(decoded);
    return true;
}

/// Returns whether the record can do without the field; an optional is then made absent.
template<class R, class M>
bool leaveOut(R& record, const Field<R, M>& listed) {
    if constexpr (isOptional<M>)
        (record.*listed.member).reset();
    return isOptional<M> || !listed.isRequired;
}

} // namespace detail

template<Record R>
std::optional<R> decodeRecord(const JsonObject& object) {
    R record;
    const bool complete = detail::readFields<R>([&](const auto& listed) {
        if constexpr (detail::isConstant<std::remove_cvref_t<decltype(listed)>>)
            return true;
        else if (const auto value = object.member(listed.name))
            return detail::readField(record, listed, *value);
        else
            return detail::leaveOut(record, listed);
    });
    return complete ? std::optional(std::move(record)) : std::nullopt;
}

template<Record R>
std::optional<R> decodeRecordExactly(const JsonObject& object) {
    R record;
    std::size_t found = 0;
    const bool complete = detail::readFields<R>([&](const auto& listed) {
        const auto value = object.member(listed.name);
        found += value ? 1 : 0;
        if constexpr (detail::isConstant<std::remove_cvref_t<decltype(listed)>>)
            return value && detail::isExactly(*value, listed);
        else if (value)
            return value->kind() != JsonKind::null && detail::readField(record, listed, *value);
        else
            return detail::leaveOut(record, listed);
    });
    // No member is named twice, so that any other would make them more.
    return complete && found == object.size() ? std::optional(std::move(record)) : std::nullopt;
}

template<Record R>
R decodeRecordLeniently(const JsonObject& object) {
    R record;
    detail::readFields<R>([&](const auto& listed) {
        if constexpr (!detail::isConstant<std::remove_cvref_t<decltype(listed)>>) {
            if (const auto value = object.member(listed.name))
                detail::readField(record, listed, *value);
        }
        return true;
    });
    return record;
}

} // namespace velmo
