#pragma once

#include <cstdint>
#include <string_view>

namespace velmo {

/// How a cell looks.
struct CellStyle {
    // Attributes, to be added up.
    static constexpr std::uint16_t bold = 1;
    static constexpr std::uint16_t faint = 2;
    static constexpr std::uint16_t italic = 4;
    static constexpr std::uint16_t blinking = 8;
    static constexpr std::uint16_t inverse = 16;
    static constexpr std::uint16_t hidden = 32;
    static constexpr std::uint16_t struckOut = 64;
    static constexpr std::uint16_t overlined = 128;
    static constexpr std::uint16_t underlineUnit = 256; ///< times the kind of underline, 0 to 5

    // Colours: 0 is the terminal's own; else one of these plus an index, or plus 0xRRGGBB. The 16
    // named ones are the first of the palette, but some terminals brighten them in bold text.
    static constexpr std::uint32_t named = std::uint32_t{1} << 26;
    static constexpr std::uint32_t palette = std::uint32_t{1} << 24;
    static constexpr std::uint32_t direct = std::uint32_t{1} << 25;

    std::uint32_t foreground = 0;
    std::uint32_t background = 0;
    std::uint32_t underline = 0;
    std::uint16_t attributes = 0;
    std::uint16_t link = 0; ///< of `CellTables`; 0: none

    /// Obeys the parameters of a CSI m, which leaves the link alone. Unknown ones are ignored.
    void change(std::string_view parameters);

    bool operator==(const CellStyle&) const = default;
};

} // namespace velmo
