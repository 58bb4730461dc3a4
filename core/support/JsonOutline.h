#pragma once

#include "core/support/Json.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

/// Reads a JSON object without its long texts, which stay where they are until they are asked for.
///
/// A `JsonDocument` takes fifteen times the memory of its text, and up to forty times while it is
/// read if there are numbers in it beyond 64 bits or beyond double. For an object of a few members
/// with a text of megabytes among them, an outline takes next to no memory, and accepts and refuses
/// exactly the same objects once the long texts have been read.
namespace velmo {

/// A text that is a member of the outline, still as JSON spells it.
class JsonLongText {
public:
    /// Takes the next part of the unescaped text. Returning false ends the reading.
    using Sink = std::function<bool(std::string_view piece)>;

    explicit JsonLongText(std::string_view spelling) : spelling_(spelling) {}

    /// Hands the unescaped text over in pieces of some ten thousand bytes at most, which never
    /// end within a scalar. Returns false if the sink did, or if the text is not JSON: the pieces
    /// handed over are then to be discarded.
    [[nodiscard]] bool read(const Sink& sink) const;

    /// Returns the length in bytes as it is spelt; the unescaped text is never longer.
    [[nodiscard]] std::size_t spelledLength() const { return spelling_.size(); }

private:
    std::string_view spelling_; ///< what stands between the quotes
};

class JsonOutline {
public:
    /// Texts that are spelt in no more bytes than this are read with the rest.
    static constexpr std::size_t maxInline = 16384;

    /// Parses the object and leaves out the long texts that are values of these members of the
    /// root. Absent if the rest is refused as `JsonDocument::parse` refuses it, or is not an
    /// object. The whole is known to be JSON only once every long text has been read too. Long
    /// texts are views into `json`.
    static std::optional<JsonOutline> parse(std::string_view json,
                                            std::initializer_list<std::string_view> names);

    /// Returns the object, in which a member reads as "" if its text was left out.
    [[nodiscard]] JsonObject object() const { return document_.object().value(); }

    /// Returns the text of a member; absent if it was not left out.
    [[nodiscard]] std::optional<JsonLongText> longText(std::string_view name) const;

private:
    using LongTexts = std::map<std::string_view, JsonLongText>;

    JsonOutline(JsonDocument document, LongTexts longTexts)
        : document_(std::move(document)), longTexts_(std::move(longTexts)) {}

    JsonDocument document_;
    LongTexts longTexts_;
};

} // namespace velmo
