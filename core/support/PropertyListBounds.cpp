#include "core/support/PropertyListBounds.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace velmo::PropertyListBounds {

namespace {

constexpr std::string_view binaryMagic = "bplist";

/// Too many rather than too few: also those in comments.
bool holdInXml(std::string_view bytes) {
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || bytes[first] != '<' || bytes.contains('\0'))
        return false;
    // Most lists are too short for too many.
    constexpr std::string_view shortest = "<dict>";
    if (bytes.size() / shortest.size() <= maxContainers)
        return true;
    std::size_t containers = 0;
    for (auto at = bytes.find('<'); at != std::string_view::npos; at = bytes.find('<', at + 1)) {
        const std::string_view tag = bytes.substr(at + 1, 5);
        containers += tag.starts_with("dict") || tag == "array" ? 1 : 0;
    }
    return containers <= maxContainers;
}

/// The binary form: the magic, the objects, a table of their offsets, and 32 bytes that describe
/// the table. An object is a byte of kind and count, perhaps the true count, and its content, which
/// in a container is references: numbers of objects.
class Binary {
public:
    explicit Binary(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool hold() {
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
        referredTo_[*root] = true;
        for (std::uint64_t object = 0; object < *count; ++object) {
            if (!check(object))
                return false;
        }
        return containers_ <= maxContainers;
    }

private:
    struct Container {
        std::uint64_t references; ///< where they begin
        std::uint64_t count;      ///< of them
    };

    /// Big-endian; absent beyond the end.
    [[nodiscard]] std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t size) const {
        if (size == 0 || size > 8 || at > bytes_.size() || size > bytes_.size() - at)
            return std::nullopt;
        std::uint64_t value = 0;
        for (const char byte : bytes_.substr(at, size))
            value = value << 8U | static_cast<unsigned char>(byte);
        return value;
    }

    [[nodiscard]] std::optional<std::uint64_t> offset(std::uint64_t object) const {
        return number(table_ + object * offsetSize_, offsetSize_);
    }

    /// Of anything else, and of what can't be read, one without references.
    [[nodiscard]] Container container(std::uint64_t object) const {
        std::uint64_t at = offset(object).value_or(bytes_.size());
        const std::uint64_t marker = number(at++, 1).value_or(0);
        const std::uint64_t kind = marker >> 4U;
        const bool isDictionary = kind == 0xD;
        if (!isDictionary && kind != 0xA && kind != 0xC)
            return {};
        std::uint64_t count = marker & 0xFU;
        if (count == 0xF) {
            const std::uint64_t size = std::uint64_t{1} << (number(at, 1).value_or(0) & 0x3U);
            count = number(at + 1, size).value_or(0);
            at += 1 + size;
        }
        return {.references = at, .count = isDictionary ? count * 2 : count};
    }

    bool check(std::uint64_t object) {
        const auto [references, count] = container(object);
        // Those of different containers do not overlap.
        if (count > bytes_.size() - references_)
            return false;
        references_ += count;
        containers_ += count > 0 ? 1 : 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto target = number(references + i * referenceSize_, referenceSize_);
            if (!target || *target >= referredTo_.size())
                return false;
            // Writers share empty containers, which cost nothing.
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
    std::uint64_t references_ = 0; ///< of all containers so far
    std::size_t containers_ = 0;
};

} // namespace

bool hold(std::string_view bytes) {
    if (bytes.size() > maxBytes)
        return false;
    return bytes.starts_with(binaryMagic) ? Binary(bytes).hold() : holdInXml(bytes);
}

} // namespace velmo::PropertyListBounds
