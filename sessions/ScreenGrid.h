#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

    bool operator==(const CellStyle&) const = default;
};

/// A place for one character, or the left half of a wide one, which the right half follows.
struct Cell {
    char32_t text = ' ';     ///< a scalar, or a cluster of `CellTables`
    std::uint16_t style = 0; ///< of `CellTables`; 0: plain
    std::uint8_t width = 1;  ///< 2 for a left half, 0 for a right half

    bool operator==(const Cell&) const = default;
};

/// What cells refer to by number. Each table has a fixed size, so that any output takes little
/// memory. In a full table, what no cell uses is replaced; the caller says what is used.
class CellTables {
public:
    static constexpr std::size_t maxStyles = 1024;
    static constexpr std::size_t maxLinks = 16;
    static constexpr std::size_t maxLink = 512; ///< bytes
    static constexpr std::size_t maxClusters = 128;
    static constexpr std::size_t maxCluster = 8; ///< scalars

    // Return the number of a style, of a link's parameters and address as they stand in its OSC 8,
    // and the text of a cell with a combining character added. Absent if the table is full.
    std::optional<std::uint16_t> styleNumber(const CellStyle& style);
    std::optional<std::uint16_t> linkNumber(std::string_view link);
    std::optional<char32_t> combined(char32_t text, char32_t mark);

    [[nodiscard]] const CellStyle& style(std::uint16_t number) const { return styles_[number]; }

    [[nodiscard]] std::string_view link(std::uint16_t number) const { return links_[number]; }

    /// Appends the text of a cell in UTF-8.
    void append(std::string& text, const Cell& cell) const;

    /// Marks everything as unused, after which the caller names what is used.
    void beginSweep();
    void use(const Cell& cell);
    void use(const CellStyle& style);

private:
    static constexpr char32_t firstCluster = 0x200000;

    using Cluster = std::array<char32_t, maxCluster>; ///< ends at its first 0

    std::vector<CellStyle> styles_{CellStyle{}};
    std::vector<bool> usedStyles_{true};
    std::vector<std::string> links_{""};
    std::vector<bool> usedLinks_{true};
    std::vector<Cluster> clusters_;
    std::vector<bool> usedClusters_;
};

/// The rows of one screen. Behind the last cell of a row everything is blank, in the row's style.
class ScreenGrid {
public:
    struct Row {
        std::vector<Cell> cells;
        std::uint16_t style = 0; ///< of what is behind the last cell
        bool continues = false;  ///< on the next row, without a line feed
        bool isPrompt = false;   ///< a shell has marked it as the beginning of a prompt

        /// Returns the style of what is behind the last cell; plain in a row that has all of its
        /// cells, where that shows nowhere.
        [[nodiscard]] std::uint16_t styleBehind(int columns) const {
            return std::cmp_less(cells.size(), columns) ? style : std::uint16_t{0};
        }

        /// Returns the number of cells up to the last one that is not blank in that style.
        [[nodiscard]] std::size_t lengthUsed(int columns) const;
    };

    /// A part of the screen, with its last row and column.
    struct Area {
        int top;
        int bottom;
        int left;
        int right;
    };

    [[nodiscard]] int rows() const { return static_cast<int>(rows_.size()); }

    [[nodiscard]] Row& row(int number) { return rows_[static_cast<std::size_t>(number)]; }

    [[nodiscard]] const Row& row(int number) const {
        return rows_[static_cast<std::size_t>(number)];
    }

    [[nodiscard]] Cell at(int row, int column) const;

    // Write a cell, and a run of ASCII characters. A row grows in steps, so that it takes little
    // more memory than its cells. Return true if the row takes more memory than before.
    bool write(int row, int column, const Cell& cell);
    bool write(int row, int column, std::string_view run, std::uint16_t style);

    // In these, `columns` is the width of the screen, and the style that of the blanks that fill
    // what becomes empty.

    /// Fills a row from one column up to another with blanks.
    void erase(int row, int from, int to, int columns, std::uint16_t style);

    /// Moves the area's rows up, or down by a negative number.
    void scroll(const Area& area, int rows, std::uint16_t style, int columns);

    /// Moves the cells from a column on to the right, or to the left by a negative number, up to
    /// the last column that is named.
    void shift(int row, int from, int last, int by, int columns, std::uint16_t style);

    /// Changes the number of rows, after taking away some at the top, and cuts them to the columns.
    void resize(int rows, int columns, int withoutAtTop);

    /// Returns the number of cells that take memory.
    [[nodiscard]] std::size_t cells() const;

    /// Makes a row blank, in this style, and frees its memory.
    void clear(int row, std::uint16_t style) { this->row(row) = {.cells = {}, .style = style}; }

    /// Returns the number of the last row with anything but plain blanks; -1 if there is no such
    /// row.
    [[nodiscard]] int lastUsedRow() const;

private:
    std::vector<Row> rows_;
};

} // namespace velmo
