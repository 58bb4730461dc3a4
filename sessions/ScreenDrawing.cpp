#include "sessions/Screen.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

constexpr std::string_view plainCharsets = "\033(B\033)B\x0F";

/// Ends what `drawn` expects to be as after a reset, since some terminals know no soft reset:
/// margins, region, rows told from there, insertion, line feeds that return; and wraps again.
constexpr std::string_view usualModes = "\033[?69l\033[r\033[?6l\033[4l\033[20l\033[?7h";

constexpr char toSecondCharset = '\x0E';

/// Appends the codes of a colour: of the text (3), of what is behind it (4) or of the underline
/// (5).
void drawColour(std::string& text, unsigned code, std::uint32_t colour) {
    if (colour == 0)
        return;
    if ((colour & CellStyle::named) != 0) {
        const std::uint32_t index = colour & 0xFF;
        const std::uint32_t bright = index / 8 * 60;
        text.append(";").append(std::to_string(code * 10 + bright + index % 8));
        return;
    }
    text.append(";").append(std::to_string(code)).append("8");
    if ((colour & CellStyle::palette) != 0) {
        text.append(";5;").append(std::to_string(colour & 0xFF));
        return;
    }
    text.append(";2");
    for (const unsigned shift : {16U, 8U, 0U})
        text.append(";").append(std::to_string((colour >> shift) & 0xFF));
}

/// Brings the terminal's cursor up from the last row that was drawn, where the terminal may have
/// another width.
void drawMoves(std::string& text, int up, int column) {
    text += "\r";
    if (up > 0)
        text += "\033[" + std::to_string(up) + "A";
    if (column > 0)
        text += "\033[" + std::to_string(column) + "C";
}

} // namespace

std::vector<std::string> Screen::text() const {
    std::vector<std::string> lines;
    const int last = grid().lastUsedRow();
    for (int row = 0; row <= last; ++row) {
        std::string line;
        const ScreenGrid::Row& shown = grid().row(row);
        for (std::size_t column = 0; column < shown.cells.size(); ++column) {
            if (const auto cell = shown.shown(column))
                tables_.append(line, *cell);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
    }
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

std::string Screen::drawn(std::optional<PtyFrame::Size> size, Part part) const {
    const bool isSame = size == size_;
    const bool isAlternate = shown_ == alternateScreen;
    std::string text;
    if (part == Part::all)
        drawMain(text, isSame);
    if (isAlternate) {
        const PtyFrame::Size on = size.value_or(size_);
        text += "\033[?" + std::to_string(alternateMode_) + "h";
        drawStyle(text, saved_[mainScreen].value_or(Cursor{}).style, {});
        text += plainCharsets;
        text += "\033[H\033[2J";
        drawRows(text, alternateScreen,
                 std::min(grids_[alternateScreen].lastUsedRow(), on.rows - 1), on.cols);
    }
    text += modes_.sequences();
    if (returns_)
        text += "\033[20h";
    if (isSame) {
        drawTabs(text);
        drawRegion(text);
        if (saved_[shown_]) {
            drawCursor(text, shown_, withinRegion(*saved_[shown_]));
            text += "\0337";
            drawStyle(text, saved_[shown_]->style, {}); // ends its link, too
        }
    }
    const bool isPlaced = isAlternate || (isSame && part == Part::all);
    if (isPlaced)
        drawCursor(text, shown_, cursor_);
    else
        drawStyleAndCharsets(text, {}, cursor_);
    return text;
}

std::string Screen::drawnAnew(Part part) const {
    std::string text(usualModes);
    // The main screen's cursor is saved again when the terminal comes back, where the mode does so.
    if (isAlternate())
        text += "\033[?" + std::to_string(alternateMode_) + "l";
    if (part == Part::all) {
        // Erased from the bottom up, since some terminals keep what a whole screen's erasure takes.
        text.append("\033[0m\033]8;;\033\\").append(plainCharsets);
        text +=
            "\033[" + std::to_string(rows()) + ";" + std::to_string(columns()) + "H\033[1J\033[H";
    }
    return text + drawn(size_, part);
}

/// Draws the main screen, and puts the cursor where it is there.
void Screen::drawMain(std::string& text, bool isSame) const {
    const bool isAlternate = shown_ == alternateScreen;
    const Cursor cursor = isAlternate ? saved_[mainScreen].value_or(Cursor{}) : cursor_;
    const int last = std::max(grids_[mainScreen].lastUsedRow(), cursor.row);
    drawRows(text, mainScreen, last, columns());
    if (!isSame)
        drawMoves(text, last - cursor.row, cursor.column);
    else if (isAlternate && saved_[mainScreen]) {
        Cursor saved = cursor;
        saved.isInRegion = false; // neither a region nor margins are set yet
        saved.wrapsNext = saved.wrapsNext && saved.column == columns() - 1;
        drawCursor(text, mainScreen, saved);
        text += "\0337"; // the style stays: the mode of the alternate screen may save it, too
    }
}

/// Draws rows from the terminal's cursor on, up to the last that is named.
void Screen::drawRows(std::string& text, std::size_t which, int last, int maxColumns) const {
    std::uint16_t style = 0;
    const auto turnTo = [&](std::uint16_t other) {
        if (other != style)
            drawStyle(text, tables_.style(style), tables_.style(other));
        style = other;
    };
    bool isContinuation = false;
    for (int row = 0; row <= last; ++row) {
        const ScreenGrid::Row& drawn = grids_[which].row(row);
        const std::size_t whole =
            which == mainScreen && row < last
                ? drawn.lengthBefore(grids_[mainScreen].row(row + 1), columns())
                : 0;
        const std::size_t end = whole > 0 ? whole : drawn.lengthUsed(columns());
        if (drawn.isPrompt)
            text += "\033]133;A\033\\";
        for (std::size_t column = 0; column < end; ++column) {
            const auto cell = drawn.shown(column);
            if (!cell || static_cast<int>(column) + cell->width > maxColumns)
                continue;
            turnTo(cell->style);
            tables_.append(text, *cell);
        }
        const std::uint16_t behind = drawn.styleBehind(columns());
        if (isContinuation && end == 0) {
            turnTo(behind);
            text += ' '; // only a character takes the terminal from a full row to this one
        }
        isContinuation = whole > 0;
        if (isContinuation)
            continue;
        if (behind != 0 && static_cast<int>(end) < maxColumns) {
            turnTo(behind);
            text += "\033[K";
        }
        turnTo(0);
        if (row < last)
            text += "\r\n";
    }
}

/// Sets tab stops, unless they are as after a reset.
void Screen::drawTabs(std::string& text) const {
    const auto isUsual = [](std::size_t column) { return column % tabWidth == 0; };
    std::string stops;
    bool areUsual = true;
    for (std::size_t column = 0; column < tabs_.size(); ++column) {
        areUsual = areUsual && tabs_[column] == isUsual(column);
        if (tabs_[column])
            stops += "\033[" + std::to_string(column + 1) + "G\033H";
    }
    if (!areUsual)
        text += "\033[3g" + stops + "\r";
}

void Screen::drawRegion(std::string& text) const {
    const auto range = [&](int first, int last, char final) {
        text += "\033[" + std::to_string(first + 1) + ";" + std::to_string(last + 1) + final;
    };
    if (top_ > 0 || bottom_ < rows() - 1)
        range(top_, bottom_, 'r');
    if (hasMargins_ && (left_ > 0 || right_ < columns() - 1))
        range(left_, right_, 's');
}

void Screen::drawStyle(std::string& text, const CellStyle& before, const CellStyle& style) const {
    constexpr auto codes = std::to_array<std::pair<std::uint16_t, std::string_view>>({
        {CellStyle::bold, ";1"},
        {CellStyle::faint, ";2"},
        {CellStyle::italic, ";3"},
        {CellStyle::blinking, ";5"},
        {CellStyle::inverse, ";7"},
        {CellStyle::hidden, ";8"},
        {CellStyle::struckOut, ";9"},
        {CellStyle::overlined, ";53"},
    });
    text += "\033[0";
    for (const auto& [attribute, code] : codes) {
        if ((style.attributes & attribute) != 0)
            text += code;
    }
    const int underline = style.attributes / CellStyle::underlineUnit;
    if (underline > 0)
        text += underline == 1 ? ";4" : ";4:" + std::to_string(underline);
    drawColour(text, 3, style.foreground);
    drawColour(text, 4, style.background);
    drawColour(text, 5, style.underline);
    text += "m";
    if (style.link != before.link)
        text.append("\033]8;")
            .append(style.link == 0 ? ";" : tables_.link(style.link))
            .append("\033\\");
}

/// Puts the cursor where the terminal must have it, with its style and character sets.
void Screen::drawCursor(std::string& text, std::size_t which, const Cursor& cursor) const {
    text.append(plainCharsets).append(cursor.isInRegion ? "\033[?6h" : "\033[?6l");
    const ScreenGrid::Row& row = grids_[which].row(cursor.row);
    int column = cursor.column;
    // A saved cursor may wait at an edge of margins that the program has changed since.
    const bool waits = cursor.wrapsNext && wraps_ && isAtEdge(cursor);
    if (waits && !row.shown(static_cast<std::size_t>(column)))
        --column;
    const int top = cursor.isInRegion ? top_ : 0;
    const int left = cursor.isInRegion ? left_ : 0;
    text += "\033[" + std::to_string(cursor.row - top + 1) + ";" + std::to_string(column - left + 1)
            + "H";
    CellStyle style;
    if (waits) { // only a character that is written has this effect
        const Cell cell = row.shown(static_cast<std::size_t>(column)).value_or(Cell{});
        style = tables_.style(cell.style);
        drawStyle(text, {}, style);
        tables_.append(text, cell);
    }
    drawStyleAndCharsets(text, style, cursor);
}

void Screen::drawStyleAndCharsets(std::string& text, const CellStyle& before,
                                  const Cursor& cursor) const {
    drawStyle(text, before, cursor.style);
    const auto& [sets, current] = cursor.charsets;
    for (const auto& [set, prefix] : {std::pair(sets[0], '('), std::pair(sets[1], ')')}) {
        if (set != Charsets::plain)
            text.append("\033").append(1, prefix).append(1, set);
    }
    if (current == 1)
        text += toSecondCharset;
}

} // namespace velmo
