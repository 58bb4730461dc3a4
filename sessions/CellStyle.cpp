#include "sessions/CellStyle.h"

#include "core/support/Decimal.h"
#include "core/terminal/ControlSequence.h"

#include <algorithm>

namespace velmo {

namespace {

/// Returns the number, or 0 if there is no such number.
int parsed(std::string_view digits) {
    return Decimal::parseUnsigned<int>(digits).value_or(0);
}

/// Reads a colour from a field of a style, or from the fields behind it.
void setColour(std::uint32_t& colour, std::string_view field, std::string_view& rest) {
    // 38:5:n, 38:2::r:g:b and 38:2:r:g:b in one field, or 38;5;n and 38;2;r;g;b in several.
    const char separator = field.contains(':') ? ':' : ';';
    std::string_view& source = separator == ':' ? field : rest;
    if (separator == ':')
        ControlSequence::takeField(field, ':');
    const int kind = parsed(ControlSequence::takeField(source, separator));
    const auto component = [&] {
        return static_cast<std::uint32_t>(
            std::min(parsed(ControlSequence::takeField(source, separator)), 255));
    };
    if (kind == 5) {
        colour = CellStyle::palette | component();
    } else if (kind == 2) {
        if (separator == ':' && std::ranges::count(source, ':') >= 3)
            ControlSequence::takeField(source, ':'); // the colour space
        const std::uint32_t red = component();
        const std::uint32_t green = component();
        colour = CellStyle::direct | (red << 16) | (green << 8) | component();
    }
}

} // namespace

void CellStyle::change(std::string_view parameters) {
    const auto setUnderline = [&](int kind) {
        constexpr int mask = underlineUnit - 1;
        attributes =
            static_cast<std::uint16_t>((attributes & mask) | (std::min(kind, 5) * underlineUnit));
    };
    const auto set = [&](std::uint16_t attribute, bool isSet) {
        attributes =
            static_cast<std::uint16_t>(isSet ? attributes | attribute : attributes & ~attribute);
    };
    std::string_view rest = parameters;
    do {
        const std::string_view field = ControlSequence::takeField(rest, ';');
        const int code = parsed(field.substr(0, field.find(':')));
        if (code == 0)
            *this = {.link = link};
        else if (code == 1 || code == 2)
            set(code == 1 ? bold : faint, true);
        else if (code == 22)
            set(bold | faint, false);
        else if (code == 3 || code == 23)
            set(italic, code == 3);
        else if (code == 4)
            setUnderline(field.contains(':') ? parsed(field.substr(field.find(':') + 1)) : 1);
        else if (code == 21)
            setUnderline(2);
        else if (code == 24)
            setUnderline(0);
        else if (code == 5 || code == 6 || code == 25)
            set(blinking, code != 25);
        else if (code == 7 || code == 27)
            set(inverse, code == 7);
        else if (code == 8 || code == 28)
            set(hidden, code == 8);
        else if (code == 9 || code == 29)
            set(struckOut, code == 9);
        else if (code == 53 || code == 55)
            set(overlined, code == 53);
        else if (code == 38)
            setColour(foreground, field, rest);
        else if (code == 48)
            setColour(background, field, rest);
        else if (code == 58)
            setColour(underline, field, rest);
        else if (code == 39)
            foreground = 0;
        else if (code == 49)
            background = 0;
        else if (code == 59)
            underline = 0;
        else if (code >= 30 && code <= 37)
            foreground = named | static_cast<std::uint32_t>(code - 30);
        else if (code >= 40 && code <= 47)
            background = named | static_cast<std::uint32_t>(code - 40);
        else if (code >= 90 && code <= 97)
            foreground = named | static_cast<std::uint32_t>(code - 90 + 8);
        else if (code >= 100 && code <= 107)
            background = named | static_cast<std::uint32_t>(code - 100 + 8);
    } while (!rest.empty());
}

} // namespace velmo
