#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Measures and cuts text in UTF-8, in the unit that a rule names.
///
/// Every function takes any bytes: a sequence that is not UTF-8 counts as one U+FFFD per maximal
/// ill-formed subsequence. Whoever must refuse such text asks `isValidUtf8` first. Nothing here
/// depends on a locale. Views that are returned point into the argument.
namespace velmo::Text {

inline constexpr char32_t replacementCharacter = 0xFFFD;

/// A Unicode scalar and the bytes that spell it.
struct Scalar {
    char32_t value;
    std::string_view bytes;
    bool valid; ///< false: `bytes` are ill-formed and `value` is the replacement character
};

/// Returns the first scalar of a text, which must not be empty.
Scalar firstScalar(std::string_view text);

/// Iterates over a text: `for (const Scalar& scalar : Text::Scalars(text))`.
class Scalars {
public:
    explicit Scalars(std::string_view text) : text_(text) {}

    class Iterator {
    public:
        explicit Iterator(std::string_view rest) : rest_(rest) { read(); }

        const Scalar& operator*() const { return scalar_; }

        Iterator& operator++() {
            rest_.remove_prefix(scalar_.bytes.size());
            read();
            return *this;
        }

        bool operator==(std::default_sentinel_t /*end*/) const { return rest_.empty(); }

    private:
        void read() {
            if (!rest_.empty())
                scalar_ = firstScalar(rest_);
        }

        std::string_view rest_; ///< begins with the scalar
        Scalar scalar_{};
    };

    [[nodiscard]] Iterator begin() const { return Iterator(text_); }

    [[nodiscard]] static std::default_sentinel_t end() { return {}; }

private:
    std::string_view text_;
};

bool isAscii(std::string_view text);
bool isValidUtf8(std::string_view text);

/// Returns the text with U+FFFD for every ill-formed sequence.
std::string repaired(std::string_view text);

/// Appends a scalar, which must be a valid one, in UTF-8.
void append(std::string& text, char32_t scalar);

/// Returns the number of UTF-16 code units: one per scalar below U+10000, else two.
std::size_t utf16Length(std::string_view text);

/// Returns the text in UTF-16, with U+FFFD for every ill-formed sequence.
std::u16string utf16(std::string_view text);

/// A user-perceived character (extended grapheme cluster); CR LF is one.
struct Character {
    std::string_view bytes;
    std::size_t utf16Length;
};

/// Returns the first character of a text; it is empty for "".
Character firstCharacter(std::string_view text);

/// Returns the number of user-perceived characters. The cost grows with the text: to keep a text
/// from outside to a limit, use `hasMoreCharactersThan`, which stops early.
std::size_t characterCount(std::string_view text);

bool hasMoreCharactersThan(std::string_view text, std::size_t limit);

/// Returns the first `characters` user-perceived characters, or the whole text if it has no more.
std::string_view prefix(std::string_view text, std::size_t characters);

/// Returns the full Unicode lower case, without locale and without the final-sigma rule.
std::string lowercased(std::string_view text);

/// Returns the full Unicode case folding, by which a disk that ignores letter case compares names.
std::string caseFolded(std::string_view text);

/// Returns the canonical composition (NFC), for the few comparisons that are not of bytes.
std::string composed(std::string_view text);

bool isLetter(char32_t scalar); ///< category L*
bool isNumber(char32_t scalar); ///< category N*

/// Tells whether a terminal may obey the scalar instead of showing it: U+0000 to U+001F, U+007F to
/// U+009F, U+2028 and U+2029.
bool isControl(char32_t scalar);
bool hasControl(std::string_view text);

/// Tells whether the scalar ends a line: U+000A to U+000D, U+0085, U+2028 and U+2029.
bool isNewline(char32_t scalar);

/// Tells whether the scalar is white space within a line: category Zs, or tab.
bool isBlank(char32_t scalar);

/// Tells whether the scalar is white space or ends a line.
bool isBlankOrNewline(char32_t scalar);

/// Tells whether the scalar is U+0020 or U+0009, which separate the columns that command-line tools
/// print.
bool isSpaceOrTab(char32_t scalar);

/// Tells whether the table has exactly this text, compared byte by byte.
bool isOneOf(std::string_view text, std::span<const std::string_view> table);

/// Returns the text with `by` in the place of every `what`, which must not be empty. The
/// text is searched once; what was put in is not searched.
std::string replacedAll(std::string_view text, std::string_view what, std::string_view by);

using ScalarTest = bool (*)(char32_t);

/// Tells whether any scalar passes the test.
bool hasAny(std::string_view text, ScalarTest test);

/// Returns the text without the leading and trailing scalars that pass the test.
std::string_view trimmed(std::string_view text, ScalarTest test);

/// Returns the non-empty pieces between the scalars that pass the test, in order.
std::vector<std::string_view> pieces(std::string_view text, ScalarTest isSeparator);

} // namespace velmo::Text
