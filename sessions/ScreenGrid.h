#pragma once

#include "sessions/CellStyle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

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

/// The rows of one screen, and the last ones that have scrolled off its top, if the caller keeps
/// them. Behind the last cell of a row everything is blank, in the row's style.
class ScreenGrid {
public:
    static constexpr std::size_t maxAbove = 64; ///< rows that are kept above the top

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

        /// Returns the length of the row if its line goes on in the row below, so that a terminal
        /// gets there without a line feed; 0 otherwise.
        [[nodiscard]] std::size_t lengthBefore(const Row& below, int columns) const;

        /// Returns a cell as a terminal shows it; absent for the right half of a wide character. A
        /// half that has lost the other one is a blank.
        [[nodiscard]] std::optional<Cell> shown(std::size_t column) const;
    };

    struct Spot {
        int row;
        int column; ///< the number of columns for a cursor behind the last one
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

    /// Changes the size as a terminal does that keeps what has scrolled off. Rows come back from
    /// above where the screen grows, and go there where it shrinks, after the rows below the
    /// cursor are lost; lines are broken anew at another width. Returns the cursor's new place: at
    /// the same character, or at the top left if that has scrolled off.
    Spot reflow(int rows, int columns, int newColumns, Spot cursor);

    /// Keeps what is in some rows above the top, before they scroll off. The rows that have
    /// scrolled off first are forgotten for that.
    void keep(int first, int count);

    [[nodiscard]] int above() const { return static_cast<int>(above_.size()); }

    /// Forgets so many of the rows above the top, the topmost first.
    void forgetAbove(int rows) { above_.erase(above_.begin(), above_.begin() + rows); }

    /// Returns the number of cells that take memory, above the top as well.
    [[nodiscard]] std::size_t cells() const;

    /// Names all that the cells use of the tables.
    void use(CellTables& tables) const;

    /// Makes a row blank, in this style, and frees its memory.
    void clear(int row, std::uint16_t style) { this->row(row) = {.cells = {}, .style = style}; }

    /// Returns the number of the last row with anything but plain blanks; -1 if there is no such
    /// row.
    [[nodiscard]] int lastUsedRow() const;

private:
    std::vector<Row> rows_;
    std::deque<Row> above_;
};

} // namespace velmo
