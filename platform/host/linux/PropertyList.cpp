#include "platform/host/PropertyList.h"

#include "platform/host/PropertyListBounds.h"
#include "platform/host/PropertyListFile.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>

namespace velmo::PropertyList {

namespace {

struct FreeList {
    void operator()(plist_t list) const { plist_free(list); }
};

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

using List = std::unique_ptr<std::remove_pointer_t<plist_t>, FreeList>;
using Memory = std::unique_ptr<void, FreeMemory>;

/// Returns null if the list can't be read.
List listFrom(std::string_view bytes) {
    if (!PropertyListBounds::admits(bytes))
        return nullptr;
    // libplist does not know the byte order mark.
    if (bytes.starts_with(PropertyListBounds::byteOrderMark))
        bytes.remove_prefix(PropertyListBounds::byteOrderMark.size());
    // Newer versions of libplist try other forms too if they are left to find out the form.
    const bool isBinary =
        plist_is_binary(bytes.data(), static_cast<std::uint32_t>(bytes.size())) != 0;
    const auto read = isBinary ? plist_from_bin : plist_from_xml;
    plist_t list = nullptr;
    read(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
    return List(list);
}

std::optional<std::string> textIn(plist_t node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return std::string(text, length);
}

template<class T>
T scalarIn(plist_t node, void (*get)(plist_t, T*)) {
    T value{};
    get(node, &value);
    return value;
}

std::optional<Value> valueOf(plist_t node, std::size_t depth);

// Recursion is bounded by the depth. NOLINTBEGIN(misc-no-recursion)

std::optional<Value> arrayOf(plist_t node, std::size_t depth) {
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Memory owner(position);
    Value::Array array;
    plist_t element = nullptr;
    while (plist_array_next_item(node, position, &element), element != nullptr) {
        auto value = valueOf(element, depth + 1);
        if (!value)
            return std::nullopt;
        array.push_back(*std::move(value));
    }
    return array;
}

std::optional<Value> dictionaryOf(plist_t node, std::size_t depth) {
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Memory owner(position);
    Value::Dictionary dictionary;
    plist_t member = nullptr;
    char* key = nullptr;
    while (plist_dict_next_item(node, position, &key, &member), member != nullptr) {
        const Memory keyOwner(key);
        auto value = valueOf(member, depth + 1);
        if (!value)
            return std::nullopt;
        dictionary.insert_or_assign(key, *std::move(value));
    }
    return dictionary;
}

/// Returns nothing if anything in the value lies too deep, which `PropertyListBounds` has ruled out
/// unless libplist reads a list in another way.
std::optional<Value> valueOf(plist_t node, std::size_t depth) {
    if (depth > PropertyListBounds::maxDepth)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return Value(scalarIn(node, plist_get_bool_val) != 0);
    case PLIST_UINT:
        // libplist hands out the bits alone: -1 can't be told from 2^64 - 1, which lists do not
        // use.
        return Value(static_cast<std::int64_t>(scalarIn(node, plist_get_uint_val)));
    case PLIST_REAL:
        return Value(scalarIn(node, plist_get_real_val));
    case PLIST_STRING:
        return textIn(node).transform([](std::string text) { return Value(std::move(text)); });
    case PLIST_DATA: {
        std::uint64_t length = 0;
        const char* data = plist_get_data_ptr(node, &length);
        const ByteView bytes = bytesOf({data, length});
        return Value(Bytes(bytes.begin(), bytes.end()));
    }
    case PLIST_ARRAY:
        return arrayOf(node, depth);
    case PLIST_DICT:
        return dictionaryOf(node, depth);
    default:
        return Value();
    }
}

// NOLINTEND(misc-no-recursion)

} // namespace

std::optional<Value> parse(std::string_view bytes) {
    const List list = listFrom(bytes);
    return list == nullptr ? std::nullopt : valueOf(list.get(), 0);
}

Inventory::BundleInformation bundle(const std::string& path) {
    const auto file = readInformation(path);
    const List list = file ? listFrom(file->content) : nullptr;
    if (list == nullptr || plist_get_node_type(list.get()) != PLIST_DICT)
        return {};
    const auto text = [&](const char* key) { return textIn(plist_dict_get_item(list.get(), key)); };
    return {.displayName = text("CFBundleDisplayName"),
            .name = text("CFBundleName"),
            .version = text("CFBundleShortVersionString"),
            .identifier = text("CFBundleIdentifier")};
}

} // namespace velmo::PropertyList
