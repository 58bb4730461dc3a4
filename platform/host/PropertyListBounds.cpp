#include "platform/host/PropertyListBounds.h"

#include "core/support/BigEndian.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmo::PropertyListBounds {

namespace {

constexpr std::string_view binaryMagic = "bplist";

/// Counts too many containers rather than too few: also those in comments.
bool admitsXml(std::string_view bytes) {
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || bytes[first] != '<' || bytes.contains('\0'))
        return false;
    std::size_t containers = 0;
    for (auto at = bytes.find('<'); at != std::string_view::npos; at = bytes.find('<', at + 1)) {
        const std::string_view tag = bytes.substr(at + 1, 5);
        containers += tag.starts_with("dict") || tag == "array" ? 1 : 0;
    }
    return containers <= maxContainers;
}

/// Examines the binary form: the magic, the objects, a table of their offsets, and 32 bytes that
/// describe the table. An object begins with a byte of its kind and count, perhaps followed by the
/// true count; then comes its content. The content of a container is references, which are numbers
/// of objects.
class Binary {
public:
    explicit Binary(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isAdmitted() {
        constexpr std::size_t trailer = 32;
        if (bytes_.size() < binaryMagic.size() + trailer)
            return false;
        const std::size_t at = bytes_.size() - trailer;
        offsetSize_ = number(at + 6, 1).value_or(0);
        referenceSize_ = number(at + 7, 1).value_or(0);
        const auto count = number(at + 8, 8);
        const auto root = number(at + 16, 8);
        const auto table = number(at + 24, 8);
        if (!count || *count > bytes_.size() || !root || *root >= *count || !table
            || *table > bytes_.size())
            return false;
        table_ = *table;
        referredTo_.resize(*count);
        soundKeys_.resize(*count);
        referredTo_[*root] = true;
        for (std::uint64_t object = 0; object < *count; ++object) {
            if (!check(object))
                return false;
        }
        return containers_ <= maxContainers;
    }

private:
    enum Kind : std::uint64_t {
        asciiText = 0x5,
        utf16Text = 0x6,
        array = 0xA,
        set = 0xC,
        dictionary
    };

    struct Object {
        std::uint64_t kind;    ///< 0 if it can't be read
        std::uint64_t count;   ///< of characters, elements or members; no meaning in other kinds
        std::uint64_t content; ///< where it begins
    };

    struct Container {
        std::uint64_t references; ///< where they begin
        std::uint64_t count;      ///< of them
        std::uint64_t keys;       ///< how many of them, the first ones, are keys
    };

    /// Reads a number; absent if it has no size or lies beyond the end.
    [[nodiscard]] std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t size) const {
        if (size == 0 || size > 8 || at > bytes_.size() || size > bytes_.size() - at)
            return std::nullopt;
        return BigEndian::read(bytes_.substr(at, size));
    }

    [[nodiscard]] std::optional<std::uint64_t> offset(std::uint64_t object) const {
        return number(table_ + object * offsetSize_, offsetSize_);
    }

    [[nodiscard]] Object object(std::uint64_t index) const {
        const std::uint64_t at = offset(index).value_or(bytes_.size());
        const std::uint64_t marker = number(at, 1).value_or(0);
        const Object found{.kind = marker >> 4U, .count = marker & 0xFU, .content = at + 1};
        if (found.count != 0xF)
            return found;
        const std::uint64_t size = std::uint64_t{1} << (number(at + 1, 1).value_or(0) & 0x3U);
        const auto count = number(at + 2, size);
        return count ? Object{.kind = found.kind, .count = *count, .content = at + 2 + size}
                     : Object{};
    }

    /// Returns the references of a container, and none for an object of any other kind.
    [[nodiscard]] Container container(std::uint64_t index) const {
        const auto [kind, count, content] = object(index);
        if (kind == dictionary) // twice as many may wrap around; then the keys alone are too many
            return {.references = content, .count = std::max(count, count * 2), .keys = count};
        if (kind == array || kind == set)
            return {.references = content, .count = count, .keys = 0};
        return {};
    }

    /// Tells whether the object is a text without NUL, for which a reader written in C may end the
    /// whole process.
    [[nodiscard]] bool isKey(std::uint64_t index) {
        if (soundKeys_[index]) // many dictionaries may share one
            return true;
        const auto [kind, count, content] = object(index);
        const std::uint64_t size = kind == utf16Text ? 2 : 1;
        if ((kind != asciiText && kind != utf16Text) || count > (bytes_.size() - content) / size)
            return false;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (number(content + i * size, size) == 0)
                return false;
        }
        soundKeys_[index] = true;
        return true;
    }

    bool check(std::uint64_t object) {
        const auto [references, count, keys] = container(object);
        // The references of sound containers do not overlap: all of them fit into the bytes.
        if (count > bytes_.size() - references_)
            return false;
        references_ += count;
        containers_ += count > 0 ? 1 : 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto target = number(references + i * referenceSize_, referenceSize_);
            if (!target || *target >= referredTo_.size() || (i < keys && !isKey(*target)))
                return false;
            // Writers do share empty containers, which cost a reader nothing.
            if (container(*target).count == 0)
                continue;
            if (referredTo_[*target])
                return false;
            referredTo_[*target] = true;
        }
        return true;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t table_ = 0;
    std::vector<bool> referredTo_;
    std::vector<bool> soundKeys_;  ///< objects found to be keys
    std::uint64_t references_ = 0; ///< in all containers so far
    std::size_t containers_ = 0;
};

} // namespace

bool admits(std::string_view bytes) {
    if (bytes.size() > maxBytes)
        return false;
    return bytes.starts_with(binaryMagic) ? Binary(bytes).isAdmitted() : admitsXml(bytes);
}

} // namespace velmo::PropertyListBounds
