#pragma once

#include "core/support/Text.h"

#include <cstddef>
#include <string_view>

namespace velmo::Text {

/// Walks over the user-perceived characters of a text, decoding each scalar once:
///
///     for (Characters characters(text); !characters.atEnd(); characters.next())
///         units += characters.current().utf16Length;
class Characters {
public:
    explicit Characters(std::string_view text);

    [[nodiscard]] bool atEnd() const { return current_.bytes.empty(); }

    /// Returns the character that the walk stands at; it is empty at the end.
    [[nodiscard]] const Character& current() const { return current_; }

    /// Goes on to the next character.
    void next();

private:
    /// Reads the scalar that a text begins with.
    void read(std::string_view text);

    /// Tells whether the library joins the scalar that was read to the last scalar before it that
    /// is not a mark, which stands at `base`.
    [[nodiscard]] bool libraryJoins(std::string_view fromBase) const;

    std::string_view rest_; ///< begins behind the current character
    Character current_{};

    // The scalar that was read last: the first one of the rest, once a character is whole.
    char32_t value_ = 0;
    std::size_t length_ = 0; ///< bytes
    int kind_ = 0;           ///< the class that decides where a character ends
};

} // namespace velmo::Text
