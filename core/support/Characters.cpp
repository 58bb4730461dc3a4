#include "core/support/Characters.h"

#include <utf8proc.h>

#include <optional>

namespace velmo::Text {

namespace {

constexpr int other = UTF8PROC_BOUNDCLASS_OTHER;
constexpr int extend = UTF8PROC_BOUNDCLASS_EXTEND;
constexpr int joiner = UTF8PROC_BOUNDCLASS_ZWJ;
constexpr int spacingMark = UTF8PROC_BOUNDCLASS_SPACINGMARK;
constexpr int prepend = UTF8PROC_BOUNDCLASS_PREPEND;
constexpr int pictograph = UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC;
constexpr int regional = UTF8PROC_BOUNDCLASS_REGIONAL_INDICATOR;

constexpr char32_t firstIndicConsonant = 0x0915;

int kindOf(char32_t scalar) {
    if (scalar >= 0x20 && scalar < 0x7F)
        return other;
    return static_cast<int>(
        utf8proc_get_property(static_cast<utf8proc_int32_t>(scalar))->boundclass);
}

bool isControl(int kind) {
    return kind >= UTF8PROC_BOUNDCLASS_CR && kind <= UTF8PROC_BOUNDCLASS_CONTROL;
}

bool isMark(int kind) {
    return kind == extend || kind == joiner || kind == spacingMark;
}

/// Tells whether the parts of a Hangul syllable are written together.
bool joinsInHangul(int last, int next) {
    switch (next) {
    case UTF8PROC_BOUNDCLASS_L:
    case UTF8PROC_BOUNDCLASS_LV:
    case UTF8PROC_BOUNDCLASS_LVT:
        return last == UTF8PROC_BOUNDCLASS_L;
    case UTF8PROC_BOUNDCLASS_V:
        return last == UTF8PROC_BOUNDCLASS_L || last == UTF8PROC_BOUNDCLASS_LV
               || last == UTF8PROC_BOUNDCLASS_V;
    case UTF8PROC_BOUNDCLASS_T:
        return last >= UTF8PROC_BOUNDCLASS_V && last <= UTF8PROC_BOUNDCLASS_LVT;
    default:
        return false;
    }
}

/// What of a character, besides its last scalar, decides whether another belongs to it.
struct Before {
    bool pictographAndMarks = false; ///< a pictograph and then nothing but `extend`
    bool joinedPictograph = false;   ///< the same and then a joiner
    bool evenFlag = false;           ///< two regional indicators, which are a flag

    void add(int last, int kind) {
        joinedPictograph = pictographAndMarks && kind == joiner;
        pictographAndMarks = kind == pictograph || (pictographAndMarks && kind == extend);
        evenFlag = last == regional && kind == regional;
    }
};

/// Tells whether the next scalar belongs to the character that ends with the last one, by the rules
/// for extended grapheme clusters.
bool joins(int last, int next, const Before& before) {
    if (isControl(last) || isControl(next))
        return last == UTF8PROC_BOUNDCLASS_CR && next == UTF8PROC_BOUNDCLASS_LF;
    if (isMark(next) || last == prepend)
        return true;
    if (next == pictograph)
        return before.joinedPictograph;
    if (next == regional)
        return last == regional && !before.evenFlag;
    return joinsInHangul(last, next);
}

} // namespace

Characters::Characters(std::string_view text) : rest_(text) {
    if (!rest_.empty())
        read(rest_);
    next();
}

void Characters::next() {
    Before before;
    int last = other;
    std::size_t base = 0;   // where the last scalar that is not a mark stands
    std::size_t length = 0; // of the character, bytes
    std::size_t units = 0;
    while (length < rest_.size()) {
        const int kind = kind_;
        const std::size_t begin = length;
        length += length_;
        units += value_ < 0x10000 ? 1 : 2;
        if (length == rest_.size())
            break;
        read(rest_.substr(length));
        if (kind == other && kind_ == other)
            break; // As most do; the rules below say the same.
        before.add(last, kind);
        last = kind;
        base = isMark(last) ? base : begin;
        const bool isUndecided = isMark(last) && kind_ == other && value_ >= firstIndicConsonant;
        if (!joins(last, kind_, before)
            && !(isUndecided && libraryJoins(rest_.substr(base, length - base))))
            break;
    }
    current_ = {.bytes = rest_.substr(0, length), .utf16Length = units};
    rest_.remove_prefix(length);
}

void Characters::read(std::string_view text) {
    const Scalar scalar = firstScalar(text);
    value_ = scalar.value;
    length_ = scalar.bytes.size();
    kind_ = kindOf(scalar.value);
}

bool Characters::libraryJoins(std::string_view fromBase) const {
    // Newer tables than those which the rules above are for join consonants of Indic scripts.
    const auto asInt = [](char32_t scalar) { return static_cast<utf8proc_int32_t>(scalar); };
    utf8proc_int32_t state = 0;
    std::optional<char32_t> last;
    for (const Scalar& scalar : Scalars(fromBase)) {
        if (last)
            utf8proc_grapheme_break_stateful(asInt(*last), asInt(scalar.value), &state);
        last = scalar.value;
    }
    return last && !utf8proc_grapheme_break_stateful(asInt(*last), asInt(value_), &state);
}

} // namespace velmo::Text
