#include "platform/host/PropertyListBounds.h"

#include "core/support/BigEndian.h"
#include "core/support/Text.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmo::PropertyListBounds {

namespace {

constexpr std::string_view binaryMagic = "bplist";

/// Adds to a sum. Returns false if it would exceed the limit.
bool adds(std::size_t& sum, std::size_t amount, std::size_t limit) {
    if (amount > limit - sum)
        return false;
    sum += amount;
    return true;
}

/// Examines the XML form. XML has no references, so that a list unfolds to no more bytes than it
/// has. The elements are counted, whatever their names, by readers' rules for where a tag ends.
class Xml {
public:
    explicit Xml(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool isAdmitted() {
        while (!rest_.empty()) {
            if (!skipText() || !skipTag())
                return false;
        }
        return true;
    }

private:
    static constexpr std::string_view commentBegins = "<!--";
    static constexpr std::string_view literalBegins = "<![CDATA[";

    /// Skips a text, and counts what a reader may move for the entities in it.
    bool skipText() {
        const std::string_view text = rest_.substr(0, rest_.find('<'));
        const auto entities = static_cast<std::size_t>(std::ranges::count(text, '&'));
        rest_.remove_prefix(text.size());
        return adds(moved_, entities * text.size(), maxMovedBytes);
    }

    /// Skips what '<' begins. A tag without an end is accepted, because every reader stops there.
    bool skipTag() {
        if (rest_.empty())
            return true;
        if (rest_.starts_with(commentBegins))
            return skip(commentBegins, "-->");
        if (rest_.starts_with(literalBegins))
            return skip(literalBegins, "]]>");
        const auto end = rest_.find('>');
        const std::string_view tag = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end, rest_.size() - 1) + 1);
        return end == std::string_view::npos || admitsTag(tag.substr(1));
    }

    bool skip(std::string_view begin, std::string_view end) {
        const auto at = rest_.find(end, begin.size());
        if (at == std::string_view::npos)
            return false;
        rest_.remove_prefix(at + end.size());
        return true;
    }

    /// Tells whether to accept what stands between '<' and the next '>', and counts it.
    bool admitsTag(std::string_view tag) {
        const auto doubles = std::ranges::count(tag, '"');
        const auto singles = std::ranges::count(tag, '\'');
        if (tag.contains('<') || (doubles > 0 && singles > 0) || (doubles + singles) % 2 != 0)
            return false;
        if (tag.starts_with('?'))
            return tag.size() > 1 && tag.ends_with('?') && isInPlainEncoding(tag);
        if (tag.starts_with('!'))
            return !tag.contains('[');
        if (tag.starts_with('/'))
            return depth_-- > 0;
        // The element "plist" is not part of the list, and the root's depth is 0.
        if (depth_ == maxDepth + 2)
            return false;
        depth_ += tag.ends_with('/') ? 0 : 1;
        return adds(elements_, 1, maxNodes);
    }

    /// Tells whether a declaration names no encoding, or one in which the byte '<' and nothing else
    /// means '<'.
    static bool isInPlainEncoding(std::string_view declaration) {
        constexpr std::string_view word = "encoding";
        const auto at = declaration.find(word);
        if (at == std::string_view::npos)
            return true;
        declaration.remove_prefix(at + word.size());
        const auto quote = std::min(declaration.find_first_of("\"'"), declaration.size() - 1);
        const std::string name = Text::lowercased(declaration.substr(quote + 1));
        constexpr std::string_view plain[] = {"utf-8", "us-ascii", "iso-8859-", "windows-125",
                                              "macintosh"};
        return !declaration.contains(word)
               && std::ranges::any_of(plain, [&](auto known) { return name.starts_with(known); });
    }

    std::string_view rest_;
    std::size_t depth_ = 0;
    std::size_t elements_ = 0;
    std::size_t moved_ = 0;
};

bool admitsXml(std::string_view bytes) {
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && bytes[first] == '<' && !bytes.contains('\0')
           && Xml(bytes).isAdmitted();
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
        if (!count || *count > maxNodes || !root || !table || *table > bytes_.size())
            return false;
        table_ = *table;
        extents_.resize(*count);
        return unfold(*root, 0);
    }

private:
    enum Kind : std::uint64_t {
        data = 0x4,
        asciiText = 0x5,
        utf16Text = 0x6,
        array = 0xA,
        set = 0xC,
        dictionary
    };

    struct Object {
        std::uint64_t kind;    ///< 0 if it can't be read
        std::uint64_t count;   ///< of bytes, characters, elements or members; else without meaning
        std::uint64_t content; ///< where it begins
    };

    /// What an object unfolds to.
    struct Extent {
        std::size_t nodes = 0; ///< 0 if the object has not been reached
        std::size_t bytes = 0;
        std::size_t depth = unfinished; ///< of what lies deepest in it
        bool isKey = false;             ///< a text without NUL
    };

    /// The depth of an object while it is being unfolded. Too deep for any container, so that an
    /// object that contains itself is refused.
    static constexpr std::size_t unfinished = maxDepth + 1;

    /// Reads a number; absent if it has no size or lies beyond the end.
    [[nodiscard]] std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t size) const {
        if (size == 0 || size > 8 || at > bytes_.size() || size > bytes_.size() - at)
            return std::nullopt;
        return BigEndian::read(bytes_.substr(at, size));
    }

    [[nodiscard]] Object object(std::uint64_t index) const {
        const std::uint64_t at =
            number(table_ + index * offsetSize_, offsetSize_).value_or(bytes_.size());
        const std::uint64_t marker = number(at, 1).value_or(0);
        const Object found{.kind = marker >> 4U, .count = marker & 0xFU, .content = at + 1};
        if (found.count != 0xF)
            return found;
        const std::uint64_t size = std::uint64_t{1} << (number(at + 1, 1).value_or(0) & 0x3U);
        const auto count = number(at + 2, size);
        return count ? Object{.kind = found.kind, .count = *count, .content = at + 2 + size}
                     : Object{};
    }

    // Recursion is bounded by the depth. NOLINTBEGIN(misc-no-recursion)

    /// Adds what an object unfolds to. An object is read once; at every further reference, what it
    /// unfolded to is added again. Returns false if it can't be read, or a limit is exceeded.
    bool unfold(std::uint64_t index, std::size_t depth) {
        if (index >= extents_.size() || depth > maxDepth)
            return false;
        Extent& extent = extents_[index];
        if (extent.nodes > 0)
            return depth + extent.depth <= maxDepth && adds(nodes_, extent.nodes, maxNodes)
                   && adds(unfoldedBytes_, extent.bytes, maxUnfoldedBytes);
        const std::size_t nodes = nodes_;
        const std::size_t bytes = unfoldedBytes_;
        extent.nodes = 1;
        if (!adds(nodes_, 1, maxNodes) || !unfold(object(index), extent, depth))
            return false;
        extent.nodes = nodes_ - nodes;
        extent.bytes = unfoldedBytes_ - bytes;
        return true;
    }

    bool unfold(const Object& object, Extent& extent, std::size_t depth) {
        switch (object.kind) {
        case data:
        case asciiText:
            return unfoldBytes(object, extent, 1, 1);
        case utf16Text: // in UTF-8 a unit takes three bytes at most
            return unfoldBytes(object, extent, 2, 3);
        case array:
        case set:
            return unfoldParts(object.content, object.count, 0, extent, depth);
        case dictionary: // twice the count could wrap around
            return object.count <= maxNodes
                   && unfoldParts(object.content, 2 * object.count, object.count, extent, depth);
        default:
            extent.depth = 0;
            return true;
        }
    }

    /// Adds a text or data in units of `size` bytes.
    bool unfoldBytes(const Object& object, Extent& extent, std::size_t size,
                     std::size_t unfoldedSize) {
        if (object.count > (bytes_.size() - object.content) / size
            || !adds(unfoldedBytes_, object.count * unfoldedSize, maxUnfoldedBytes))
            return false;
        const std::string_view content = bytes_.substr(object.content, object.count * size);
        extent.isKey = object.kind != data && !containsNul(content, size);
        extent.depth = 0;
        return true;
    }

    /// Adds the objects that a container refers to. The first `keys` of them are its keys, and must
    /// be texts without NUL: at any other key, a reader written in C may end the whole process.
    bool unfoldParts(std::uint64_t at, std::uint64_t count, std::uint64_t keys, Extent& extent,
                     std::size_t depth) {
        std::size_t deepest = 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto target = number(at + i * referenceSize_, referenceSize_);
            if (!target || !unfold(*target, depth + 1) || (i < keys && !extents_[*target].isKey))
                return false;
            deepest = std::max(deepest, extents_[*target].depth + 1);
        }
        extent.depth = deepest;
        return true;
    }

    // NOLINTEND(misc-no-recursion)

    static bool containsNul(std::string_view units, std::size_t size) {
        if (size == 1)
            return units.contains('\0');
        for (std::size_t i = 0; i < units.size(); i += 2) {
            if (units[i] == 0 && units[i + 1] == 0)
                return true;
        }
        return false;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t table_ = 0;
    std::vector<Extent> extents_;
    std::size_t nodes_ = 0;
    std::size_t unfoldedBytes_ = 0;
};

} // namespace

bool admits(std::string_view bytes) {
    if (bytes.size() > maxBytes)
        return false;
    return bytes.starts_with(binaryMagic) ? Binary(bytes).isAdmitted() : admitsXml(bytes);
}

} // namespace velmo::PropertyListBounds
