#include "sessions/ScreenGrid.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

namespace velmo {

namespace {

using Row = ScreenGrid::Row;
using Rows = std::deque<Row>;
using Spot = ScreenGrid::Spot;

/// Places that stay at their characters: the cursor, and the beginning of the screen's first row.
using Spots = std::array<Spot, 2>;

/// What a program has written without a line feed, as one row of any length.
struct Line {
    Row row;
    std::size_t rows = 0; ///< on which it is shown

    /// The spots in these rows, told from the line's beginning.
    std::array<std::optional<std::size_t>, Spots{}.size()> spots;
};

/// Returns the line that begins in a row, with blanks up to a cursor behind its last character,
/// since these may have been written.
Line lineAt(const Rows& rows, std::size_t first, int columns, const Spots& spots) {
    Line line{.row = {.cells = {}, .isPrompt = rows[first].isPrompt}, .spots = {}};
    auto& cells = line.row.cells;
    for (bool goesOn = true; goesOn;) {
        const std::size_t number = first + line.rows++;
        const Row& row = rows[number];
        for (std::size_t i = 0; i < spots.size(); ++i) {
            if (std::cmp_equal(spots[i].row, number))
                line.spots[i] = cells.size() + static_cast<std::size_t>(spots[i].column);
        }
        const std::size_t whole =
            number + 1 < rows.size() ? row.lengthBefore(rows[number + 1], columns) : 0;
        goesOn = whole > 0;
        line.row.style = row.styleBehind(columns);
        const std::size_t end = cells.size() + (goesOn ? whole : row.lengthUsed(columns));
        cells.insert(cells.end(), row.cells.begin(), row.cells.end());
        cells.resize(end, Cell{.style = line.row.style});
    }
    for (const auto spot : line.spots)
        cells.resize(std::max(cells.size(), spot.value_or(0)), Cell{.style = line.row.style});
    return line;
}

/// Breaks a line into rows of so many columns, and adds them. A wide character is not broken, where
/// a row has two columns. The spots in the line are moved with it.
void addRows(Rows& rows, const Line& line, int columns, Spots& spots) {
    const std::vector<Cell>& cells = line.row.cells;
    const auto width = static_cast<std::size_t>(columns);
    for (std::size_t start = 0, end = 0; start == 0 || start < cells.size(); start = end) {
        const bool isLast = cells.size() - start <= width;
        end = isLast ? cells.size() : start + width;
        if (!isLast && width > 1 && cells[end - 1].width == 2)
            --end;
        for (std::size_t i = 0; i < spots.size(); ++i) {
            const auto spot = line.spots[i];
            if (spot && *spot >= start && (*spot < end || isLast))
                spots[i] = {.row = static_cast<int>(rows.size()),
                            .column = static_cast<int>(*spot - start)};
        }
        const auto from = cells.begin() + static_cast<std::ptrdiff_t>(start);
        const auto to = cells.begin() + static_cast<std::ptrdiff_t>(end);
        rows.push_back({.cells = {from, to},
                        .style = isLast ? line.row.style : std::uint16_t{0},
                        .continues = !isLast,
                        .isPrompt = start == 0 && line.row.isPrompt});
        if (isLast)
            return;
    }
}

/// Returns the rows broken anew for another width, with the spots moved.
Rows broken(const Rows& rows, int columns, int newColumns, Spots& spots) {
    Rows all;
    const Spots before = spots;
    for (std::size_t next = 0; next < rows.size();) {
        const Line line = lineAt(rows, next, columns, before);
        next += line.rows;
        addRows(all, line, newColumns, spots);
    }
    return all;
}

} // namespace

ScreenGrid::Spot ScreenGrid::reflow(int rows, int columns, int newColumns, Spot cursor) {
    const int lost = std::clamp(this->rows() - rows, 0, this->rows() - 1 - cursor.row);
    rows_.resize(rows_.size() - static_cast<std::size_t>(lost));
    const int missing = std::max(rows - this->rows() - above(), 0);
    Spots spots = {Spot{.row = cursor.row + above(), .column = cursor.column},
                   Spot{.row = above(), .column = 0}};
    auto& [moved, first] = spots;
    Rows all = std::exchange(above_, {});
    std::ranges::move(rows_, std::back_inserter(all));
    all.resize(all.size() + static_cast<std::size_t>(missing));
    if (newColumns != columns)
        all = broken(all, columns, newColumns, spots);
    // Blank rows below the cursor make room for lines that take more rows than before.
    const auto isTooLong = [&] { return static_cast<int>(all.size()) - first.row > rows; };
    while (isTooLong() && static_cast<int>(all.size()) - 1 > moved.row
           && all.back().lengthUsed(newColumns) == 0)
        all.pop_back();

    const int off = std::max(static_cast<int>(all.size()) - rows, 0);
    const auto top = all.begin() + off;
    const auto kept = std::min<std::ptrdiff_t>(off, maxAbove);
    above_.assign(std::move_iterator(top - kept), std::move_iterator(top));
    rows_.assign(std::move_iterator(top), std::move_iterator(all.end()));
    rows_.resize(static_cast<std::size_t>(rows));
    return moved.row < off ? Spot{.row = 0, .column = 0}
                           : Spot{.row = moved.row - off, .column = moved.column};
}

} // namespace velmo
