#include "sessions/ScreenGrid.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t rowStep = 32; ///< cells by which a row grows

/// Returns the place of the value in a table that has at most `max` entries, where it is put in if
/// it is new; absent if all entries are used for others.
template<class T>
std::optional<std::size_t> placed(std::vector<T>& table, std::vector<bool>& used, std::size_t max,
                                  const T& value) {
    std::size_t unused = table.size();
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (used[i] && table[i] == value)
            return i;
        if (!used[i])
            unused = i;
    }
    if (unused == max)
        return std::nullopt;
    if (unused == table.size()) {
        table.push_back(value);
        used.push_back(true);
    } else {
        table[unused] = value;
        used[unused] = true;
    }
    return unused;
}

std::size_t index(int number) {
    return static_cast<std::size_t>(number);
}

void reserve(ScreenGrid::Row& row, std::size_t length) {
    row.cells.reserve((length + rowStep - 1) / rowStep * rowStep);
}

/// Adds blanks to a row. Returns true if it takes more memory than before.
bool lengthen(ScreenGrid::Row& row, std::size_t length) {
    const std::size_t before = row.cells.capacity();
    reserve(row, length);
    row.cells.resize(length, Cell{.style = row.style});
    return row.cells.capacity() > before;
}

} // namespace

std::optional<std::uint16_t> CellTables::styleNumber(const CellStyle& style) {
    return placed(styles_, usedStyles_, maxStyles, style).transform([](std::size_t place) {
        return static_cast<std::uint16_t>(place);
    });
}

std::optional<std::uint16_t> CellTables::linkNumber(std::string_view link) {
    if (link.size() > maxLink)
        return 0;
    return placed(links_, usedLinks_, maxLinks, std::string(link)).transform([](std::size_t place) {
        return static_cast<std::uint16_t>(place);
    });
}

std::optional<char32_t> CellTables::combined(char32_t text, char32_t mark) {
    Cluster cluster{text};
    if (text >= firstCluster)
        cluster = clusters_[text - firstCluster];
    auto* const end = std::ranges::find(cluster, U'\0');
    if (end == cluster.end())
        return text;
    *end = mark;
    return placed(clusters_, usedClusters_, maxClusters, cluster).transform([](std::size_t place) {
        return static_cast<char32_t>(firstCluster + place);
    });
}

void CellTables::append(std::string& text, const Cell& cell) const {
    if (cell.text < firstCluster) {
        Text::append(text, cell.text);
        return;
    }
    for (const char32_t scalar : clusters_[cell.text - firstCluster]) {
        if (scalar != 0)
            Text::append(text, scalar);
    }
}

void CellTables::beginSweep() {
    usedStyles_.assign(usedStyles_.size(), false);
    usedLinks_.assign(usedLinks_.size(), false);
    usedClusters_.assign(usedClusters_.size(), false);
    usedStyles_.front() = true;
    usedLinks_.front() = true;
}

void CellTables::use(const Cell& cell) {
    usedStyles_[cell.style] = true;
    usedLinks_[styles_[cell.style].link] = true;
    if (cell.text >= firstCluster)
        usedClusters_[cell.text - firstCluster] = true;
}

void CellTables::use(const CellStyle& style) {
    usedLinks_[style.link] = true;
}

Cell ScreenGrid::at(int row, int column) const {
    const Row& found = rows_[index(row)];
    return index(column) < found.cells.size() ? found.cells[index(column)]
                                              : Cell{.style = found.style};
}

std::size_t ScreenGrid::Row::lengthUsed(int columns) const {
    std::size_t length = cells.size();
    while (length > 0 && shown(length - 1) == Cell{.style = styleBehind(columns)})
        --length;
    return length;
}

std::size_t ScreenGrid::Row::lengthBefore(const Row& below, int columns) const {
    if (!continues || below.isPrompt)
        return 0;
    const std::size_t width = index(columns);
    const bool isNextWide = below.shown(0).value_or(Cell{}).width == 2;
    return isNextWide && lengthUsed(columns) < width ? width - 1 : width;
}

std::optional<Cell> ScreenGrid::Row::shown(std::size_t column) const {
    if (column >= cells.size())
        return Cell{.style = style};
    const Cell& cell = cells[column];
    const bool isLeftHalf =
        cell.width == 2 && column + 1 < cells.size() && cells[column + 1].width == 0;
    if (cell.width == 1 || isLeftHalf)
        return cell;
    if (cell.width == 0 && column > 0 && cells[column - 1].width == 2)
        return std::nullopt;
    return Cell{.style = cell.style};
}

bool ScreenGrid::write(int row, int column, const Cell& cell) {
    Row& found = rows_[index(row)];
    bool grows = false;
    if (index(column) >= found.cells.size()) {
        if (cell == Cell{.style = found.style})
            return false;
        grows = lengthen(found, index(column) + 1);
    }
    found.cells[index(column)] = cell;
    return grows;
}

bool ScreenGrid::write(int row, int column, std::string_view run, std::uint16_t style) {
    Row& found = rows_[index(row)];
    // Blanks behind the last cell need none of their own.
    const std::size_t used = style == found.style ? run.find_last_not_of(' ') + 1 : run.size();
    const std::size_t length = std::max(used > 0 ? index(column) + used : 0,
                                        std::min(found.cells.size(), index(column) + run.size()));
    const std::size_t before = found.cells.capacity();
    reserve(found, length);
    if (found.cells.size() < std::min(index(column), length))
        lengthen(found, index(column));
    for (std::size_t i = index(column); i < length; ++i) {
        const Cell cell{.text = static_cast<char32_t>(run[i - index(column)]), .style = style};
        if (i < found.cells.size())
            found.cells[i] = cell;
        else
            found.cells.push_back(cell);
    }
    return found.cells.capacity() > before;
}

void ScreenGrid::erase(int row, int from, int to, int columns, std::uint16_t style) {
    Row& found = rows_[index(row)];
    if (to >= columns) {
        if (index(from) < found.cells.size() || (from > 0 && style == found.style))
            found.cells.resize(std::min(found.cells.size(), index(from)));
        else if (from > 0)
            lengthen(found, index(from));
        found.style = style;
        return;
    }
    for (int column = from; column < to; ++column)
        write(row, column, {.style = style});
}

void ScreenGrid::scroll(const Area& area, int rows, std::uint16_t style, int columns) {
    const int height = area.bottom - area.top + 1;
    const int count = std::clamp(rows, -height, height);
    const bool isWhole = area.left == 0 && area.right == columns - 1;
    const auto empty = [&](int row) {
        isWhole ? clear(row, style) : erase(row, area.left, area.right + 1, columns, style);
    };
    if (isWhole) {
        const auto begin = rows_.begin() + area.top;
        const auto end = rows_.begin() + area.bottom + 1;
        std::rotate(begin, count > 0 ? begin + count : end + count, end);
    } else {
        const int step = count > 0 ? 1 : -1;
        int row = count > 0 ? area.top : area.bottom;
        for (int left = height - std::abs(count); left > 0; --left, row += step) {
            for (int column = area.left; column <= area.right; ++column)
                write(row, column, at(row + count, column));
        }
    }
    for (int i = 0; i < std::abs(count); ++i)
        empty(count > 0 ? area.bottom - i : area.top + i);
}

void ScreenGrid::shift(int row, int from, int last, int by, int columns, std::uint16_t style) {
    const int width = last - from + 1;
    const int count = std::clamp(by, -width, width);
    if (count > 0) {
        for (int column = last; column >= from + count; --column)
            write(row, column, at(row, column - count));
        erase(row, from, from + count, columns, style);
    } else {
        for (int column = from; column <= last + count; ++column)
            write(row, column, at(row, column - count));
        erase(row, last + 1 + count, last + 1, columns, style);
    }
}

void ScreenGrid::resize(int rows, int columns, int withoutAtTop) {
    rows_.erase(rows_.begin(), rows_.begin() + std::min(withoutAtTop, this->rows()));
    rows_.resize(index(rows));
    for (Row& row : rows_) {
        if (row.cells.size() <= index(columns))
            continue;
        row.cells.resize(index(columns));
        row.continues = false;
        if (row.cells.back().width == 2)
            row.cells.back() = {};
    }
}

void ScreenGrid::keep(int first, int count) {
    for (int row = first; row < first + count; ++row) {
        if (above_.size() == maxAbove)
            above_.pop_front();
        above_.push_back(std::move(rows_[index(row)]));
    }
}

std::size_t ScreenGrid::cells() const {
    std::size_t count = 0;
    for (const Row& row : rows_)
        count += row.cells.capacity();
    for (const Row& row : above_)
        count += row.cells.capacity();
    return count;
}

void ScreenGrid::use(CellTables& tables) const {
    const auto useRow = [&tables](const Row& row) {
        tables.use(Cell{.style = row.style});
        for (const Cell& cell : row.cells)
            tables.use(cell);
    };
    std::ranges::for_each(rows_, useRow);
    std::ranges::for_each(above_, useRow);
}

int ScreenGrid::lastUsedRow() const {
    const auto isUsed = [](const Row& row) {
        return row.style != 0
               || std::ranges::any_of(row.cells, [](const Cell& cell) { return cell != Cell{}; });
    };
    for (int row = rows() - 1; row >= 0; --row) {
        if (isUsed(rows_[index(row)]))
            return row;
    }
    return -1;
}

} // namespace velmo
