#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>
#include <string_view>

/// Tells people what keeps a text from being a record, such as a file that they have edited.
namespace velmo {

namespace detail {

/// Returns in words what a value of the type may be.
template<class T>
std::string wanted() {
    if constexpr (isOptional<T>) {
        return wanted<typename T::value_type>() + ", or null";
    } else if constexpr (HasRawText<T>) {
        std::string words = "one of";
        for (const std::string_view text : rawTexts<T>)
            words.append(words == "one of" ? " \"" : ", \"").append(text).append("\"");
        return words;
    } else if constexpr (std::same_as<T, bool>) {
        return "true or false";
    } else if constexpr (std::integral<T>) {
        return "a whole number";
    } else if constexpr (std::floating_point<T>) {
        return "a number";
    } else if constexpr (isList<T>) {
        return "a list, each of it " + wanted<typename T::value_type>();
    } else if constexpr (Record<T>) {
        return "an object";
    } else {
        return "a text";
    }
}

} // namespace detail

/// Returns which member is at fault, by its path, and what it must be; absent if the object is a
/// record.
template<Record R>
std::optional<std::string> faultOf(const JsonObject& object, const std::string& path = "") {
    std::optional<std::string> fault;
    const auto isInOrder = [&]<class M>(const Field<R, M>& listed) {
        const std::string name = path + std::string(listed.name);
        const auto value = object.member(listed.name);
        if (!value && (detail::isOptional<M> || !listed.isRequired))
            return true;
        if (value && decodeJson<M>(*value))
            return true;
        if constexpr (Record<M>) {
            if (const auto inner = value ? value->object() : std::nullopt) {
                fault = faultOf<M>(*inner, name + ".");
                return false;
            }
        }
        fault = '"' + name + (value ? "\" must be " : "\" is missing; it must be ")
                + detail::wanted<M>();
        return false;
    };
    detail::readFields<R>(isInOrder);
    return fault;
}

/// Returns the name, as it is spelt, of the first member that an object of the text names twice;
/// absent if every object names its members once. The text may be any.
std::optional<std::string> nameGivenTwice(std::string_view json);

/// Does the same as `faultOf` above for a whole text.
template<Record R>
std::optional<std::string> faultOf(std::string_view json) {
    const auto document = JsonDocument::parse(json);
    const auto object = document.and_then(&JsonDocument::object);
    if (object)
        return faultOf<R>(*object);
    return nameGivenTwice(json)
        .transform([](const std::string& name) { return '"' + name + "\" is given twice"; })
        .value_or("it is no object in JSON");
}

} // namespace velmo
