#include "sessions/Screen.h"

#include "core/support/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace velmo {

namespace {

using ControlSequence::Csi;
using ControlSequence::Numbers;
using Kind = SequenceReader::Kind;

constexpr int sweepPeriod = 256;      // lookups in tables
constexpr std::size_t fewBytes = 256; // that are read without a look at what scrolls off
constexpr std::size_t maxWaiting = std::size_t{1} << 14; ///< bytes of lines
constexpr int maxCount = 10000;                          // more than any screen has
constexpr char shiftOut = '\x0E';
constexpr char shiftIn = '\x0F';
constexpr std::size_t maxAnswers = 4096; ///< bytes

/// The final bytes of the sequences that move, write and erase, which are by far the most.
constexpr std::string_view setsNoMode = "ABCDGHJKXdf";

// The answers of xterm, which is what the sessions' TERM stands for.
constexpr std::string_view terminalIsWell = "\033[0n";
constexpr std::string_view kindOfTerminal = "\033[?64;1;2;6;9;15;16;17;18;21;22;28c";
constexpr std::string_view versionOfTerminal = "\033[>41;379;0c";

/// The characters that stand for "_" to "~" in the character set for drawing lines.
constexpr auto lineDrawing = std::to_array<char32_t>(
    {U' ',      U'\u25C6', U'\u2592', U'\u2409', U'\u240C', U'\u240D', U'\u240A', U'\u00B0',
     U'\u00B1', U'\u2424', U'\u240B', U'\u2518', U'\u2510', U'\u250C', U'\u2514', U'\u253C',
     U'\u23BA', U'\u23BB', U'\u2500', U'\u23BC', U'\u23BD', U'\u251C', U'\u2524', U'\u2534',
     U'\u252C', U'\u2502', U'\u2264', U'\u2265', U'\u03C0', U'\u2260', U'\u00A3', U'\u00B7'});
static_assert(lineDrawing.size() == '~' - '_' + 1);

/// Returns the number with this index, or `absent` if it is left out or 0.
int numberAt(const Numbers& numbers, std::size_t index, int absent) {
    const std::int32_t number = index < numbers.size() ? numbers[index] : 0;
    return number == 0 ? absent : std::min(number, maxCount);
}

/// Returns the length of a sequence at the front that only has an effect on its own row, or on what
/// is written next: CSI, numbers and one of the final bytes. Returns 0 for any other.
std::size_t lengthInRow(std::string_view text) {
    constexpr std::string_view finals = "mKCDGPX@`";
    if (!text.starts_with("\033["))
        return 0;
    const std::size_t end = text.find_first_not_of("0123456789;:", 2);
    const bool isInRow = end != std::string_view::npos && finals.contains(text[end])
                         && end <= SequenceReader::maxSequence;
    return isInRow ? end + 1 : 0;
}

/// Returns the front of the text that goes from row to row without any sequence but those. Its
/// first `known` bytes were found to do so before.
std::string_view linesAtFront(std::string_view text, std::size_t known) {
    std::size_t end = known;
    while (end < text.size()) {
        end = std::min(text.find('\033', end), text.size());
        const std::size_t sequence = lengthInRow(text.substr(end));
        if (sequence == 0)
            break;
        end += sequence;
    }
    const std::string_view lines = text.substr(0, end);
    return lines.substr(0, std::min(lines.find(shiftOut), lines.find(shiftIn)));
}

/// Removes the text up to the end of the next style from its front. Returns the style's parameters;
/// absent if the text contains no further style.
std::optional<std::string_view> nextStyle(std::string_view& text) {
    while (true) {
        text.remove_prefix(std::min(text.find('\033'), text.size()));
        const std::size_t length = lengthInRow(text);
        if (length == 0)
            return std::nullopt;
        const std::string_view sequence = text.substr(0, length);
        text.remove_prefix(length);
        if (sequence.back() == 'm')
            return sequence.substr(2, length - 3);
    }
}

bool isAscii(char byte) {
    return byte >= ' ' && byte < '\x7F';
}

/// Returns the number of printable ASCII characters at the front, at many times the speed of a look
/// at each.
std::size_t lengthOfAscii(std::string_view text) {
    constexpr std::size_t block = 64;
    const auto isPlain = [](const char* start) {
        std::uint8_t others = 0;
        for (std::size_t i = 0; i < block; ++i)
            others |=
                static_cast<std::uint8_t>(static_cast<std::uint8_t>(start[i] - ' ') > '~' - ' ');
        return others == 0;
    };
    std::size_t length = 0;
    while (length + block <= text.size() && isPlain(text.data() + length))
        length += block;
    while (length < text.size() && isAscii(text[length]))
        ++length;
    return length;
}

} // namespace

Screen::Screen(PtyFrame::Size size) : size_(size) {
    for (ScreenGrid& each : grids_)
        each.resize(rows(), columns(), 0);
    reset();
}

void Screen::follow(ByteView output, Lines lastLines) {
    const auto read = [this](std::string_view text) {
        reader_.read(bytesOf(text),
                     [this](const SequenceReader::Sequence& sequence) { obey(sequence); });
    };
    std::string_view rest = textOf(output);
    std::string joined;
    // The lines that waited are known to be lines, but for a sequence at their end that is cut.
    std::size_t known = std::min(waiting_.rfind('\033'), waiting_.size());
    if (!waiting_.empty()) {
        joined = std::exchange(waiting_, {}).append(rest);
        rest = joined;
    }
    while (!rest.empty()) {
        const std::string_view lines = isAtRest() ? linesAtFront(rest, known) : "";
        known = 0;
        const std::size_t skipped = lines.size() < fewBytes ? 0 : skip(lines);
        const std::size_t length = std::max(lines.size(), std::min(fewBytes, rest.size()));
        const bool mayWait = lastLines == Lines::mayWait && skipped > 0;
        // Without another ESC, only a sequence that is cut can stand behind the lines.
        if (mayWait && rest.size() - skipped <= maxWaiting
            && rest.find('\033', length + 1) == std::string_view::npos) {
            waiting_ = rest.substr(skipped);
            return;
        }
        read(rest.substr(skipped, length - skipped));
        rest.remove_prefix(length);
        for (; !rest.empty() && !isAtRest(); rest.remove_prefix(1))
            read(rest.substr(0, 1));
    }
}

/// Leaves out what the lines behind it scroll off the top, and takes over its style. Returns the
/// number of bytes that are left out.
std::size_t Screen::skip(std::string_view lines) {
    const bool scrollsWhole = top_ == 0 && bottom_ == rows() - 1 && !hasMargins_;
    if (!scrollsWhole)
        return 0;
    // Each line feed goes down by a row at least. So many of them leave the rows behind that the
    // screen has below the cursor, then all that was written before, and what is kept of that.
    const int kept = shown_ == mainScreen ? static_cast<int>(ScreenGrid::maxAbove) : 0;
    const int enough = rows() + bottom_ - cursor_.row + 1 + kept;
    std::size_t start = lines.size();
    int count = 0;
    if (!lines.contains('\n'))
        return skipRows(lines, enough);
    for (const char* const text = lines.data(); start > 0 && count < enough; --start)
        count += text[start - 1] == '\n' ? 1 : 0;
    if (count < enough)
        return skipRows(lines, enough);
    if (start == 0 || lines[start - 1] != '\r') // `start` is at the line feed
        return 0;
    const std::string_view skipped = lines.substr(0, start + 1);
    takeStyle(skipped);
    cursor_.column = 0;
    cursor_.wrapsNext = false;
    last_ = 0;
    return skipped.size();
}

/// Does the same for the front of a long line of plain characters, which fills row after row.
std::size_t Screen::skipRows(std::string_view lines, int enough) const {
    const std::size_t plain = lengthOfAscii(lines);
    const auto width = static_cast<std::size_t>(columns());
    const std::size_t shown = width * static_cast<std::size_t>(enough + 1);
    return wraps_ && !inserts_ && plain > shown ? (plain - shown) / width * width : 0;
}

/// Obeys the styles in lines that are left out.
void Screen::takeStyle(std::string_view lines) {
    const std::string_view all = lines;
    std::string_view sinceReset = lines;
    while (const auto style = nextStyle(lines)) {
        if (style->empty() || *style == "0" || style->starts_with("0;"))
            sinceReset = all.substr(static_cast<std::size_t>(style->data() - all.data()) - 2);
    }
    while (const auto style = nextStyle(sinceReset))
        cursor_.style.change(*style);
}

void Screen::obey(const SequenceReader::Sequence& sequence) {
    switch (sequence.kind) {
    case Kind::text:
        write(sequence.text);
        return;
    case Kind::control:
        obeyControl(sequence.text.front());
        return;
    case Kind::escape:
        followModes(sequence);
        obeyEscape(sequence.text);
        return;
    case Kind::osc:
        followModes(sequence);
        if (!isAnswering_)
            obeyOsc(sequence.text);
        return;
    case Kind::csi:
        if (!setsNoMode.contains(sequence.text.back()))
            followModes(sequence);
        if (const auto csi = Csi::parse(sequence.text))
            obeyCsi(*csi);
        return;
    case Kind::dropped:
        break;
    }
}

void Screen::followModes(const SequenceReader::Sequence& sequence) {
    if (!isAnswering_)
        modes_.obey(sequence);
}

void Screen::obeyControl(char control) {
    last_ = 0;
    switch (control) {
    case '\b':
        cursor_.column = std::max(cursor_.column - 1, isWithinMargins() ? left_ : 0);
        cursor_.wrapsNext = false;
        return;
    case '\t':
        tab(1);
        return;
    case '\n':
    case '\v':
    case '\f':
        index();
        if (returns_)
            obeyControl('\r');
        return;
    case '\r':
        cursor_.column = hasMargins_ && cursor_.column >= left_ ? left_ : 0;
        cursor_.wrapsNext = false;
        return;
    case shiftOut:
    case shiftIn:
        cursor_.charsets.current = control == shiftOut ? 1 : 0;
        return;
    default:
        return;
    }
}

void Screen::obeyEscape(std::string_view escape) {
    if (escape.size() == 2 && (escape[0] == '(' || escape[0] == ')'))
        cursor_.charsets.sets[escape[0] == '(' ? 0 : 1] = escape[1];
    if (escape == "#8")
        fillToAlign();
    if (escape.size() != 1)
        return;
    switch (escape.front()) {
    case '7':
        saved_[shown_] = cursor_;
        return;
    case '8':
        restore();
        return;
    case 'D':
        index();
        return;
    case 'E':
        index();
        obeyControl('\r');
        return;
    case 'H':
        tabs_[static_cast<std::size_t>(cursor_.column)] = true;
        return;
    case 'M':
        reverseIndex();
        return;
    case 'c':
        reset();
        return;
    default:
        return;
    }
}

/// Fills the screen with "E", if it is small enough to be filled.
void Screen::fillToAlign() {
    endRegion();
    cursor_.isInRegion = false;
    place(0, 0);
    if (isAnswering_ || std::cmp_greater(rows() * columns(), maxCells / 2))
        return;
    for (int row = 0; row < rows(); ++row) {
        for (int column = 0; column < columns(); ++column)
            grid().write(row, column, {.text = U'E'});
    }
    limit();
}

void Screen::obeyOsc(std::string_view osc) {
    if (osc.starts_with("133;A"))
        grid().row(cursor_.row).isPrompt = true;
    if (!osc.starts_with("8;") || !ControlSequence::isMarkOrColour(osc))
        return;
    std::string_view link = osc.substr(2);
    const std::size_t address = link.find(';');
    if (address == std::string_view::npos || address + 1 == link.size())
        link = "";
    lookups_ += 16; // a flood of links is slower to read than one of styles
    auto number = tables_.linkNumber(link);
    if (!number && sweep())
        number = tables_.linkNumber(link);
    cursor_.style.link = number.value_or(0);
}

void Screen::obeyCsi(const Csi& csi) {
    if (csi.intermediates == "!" && csi.final == 'p')
        softReset();
    if (!csi.intermediates.empty())
        return;
    if (csi.marker.empty() && csi.final == 'm') {
        cursor_.style.change(csi.parameters);
        return;
    }
    const auto numbers = csi.numbers();
    if (csi.final == 'n' || csi.final == 'c')
        answer(csi);
    else if (csi.final == 'h' || csi.final == 'l')
        obeyModes(csi);
    else if (csi.marker == "?" && csi.final == 'J')
        eraseDisplay(numbers.front());
    else if (csi.marker == "?" && csi.final == 'K')
        obeyPlain('K', numbers);
    else if (csi.marker.empty() && !move(csi.final, numbers))
        obeyPlain(csi.final, numbers);
}

/// Notes the answer to a query, if the screen answers queries and this one is on the list.
void Screen::answer(const Csi& csi) {
    if (!isAnswering_ || answers_.size() >= maxAnswers)
        return;
    const std::int32_t asked = csi.numbers().front();
    const bool isPlain = csi.marker.empty();
    if (csi.final == 'n' && isPlain && asked == 5)
        answers_ += terminalIsWell;
    else if (csi.final == 'n' && isPlain && asked == 6)
        answers_ +=
            "\033[" + std::to_string(cursor().row) + ";" + std::to_string(cursor().column) + "R";
    else if (csi.final == 'c' && asked == 0 && isPlain)
        answers_ += kindOfTerminal;
    else if (csi.final == 'c' && asked == 0 && csi.marker == ">")
        answers_ += versionOfTerminal;
}

/// Obeys a sequence that moves the cursor. Returns false for any other.
bool Screen::move(char final, const Numbers& numbers) {
    const int count = numberAt(numbers, 0, 1);
    const int origin = cursor_.isInRegion ? top_ : 0;
    const int firstColumn = isWithinMargins() ? left_ : 0;
    switch (final) {
    case 'A':
    case 'F':
        moveRows(-count);
        break;
    case 'B':
    case 'E':
    case 'e':
        moveRows(count);
        break;
    case 'C':
    case 'a':
        cursor_.column = std::min(cursor_.column + count, rightEdge());
        break;
    case 'D':
        cursor_.column = std::max(cursor_.column - count, firstColumn);
        break;
    case 'G':
    case '`':
        place(cursor_.row, count - 1);
        break;
    case 'd':
        place(origin + count - 1, cursor_.column);
        break;
    case 'H':
    case 'f':
        place(origin + count - 1, (cursor_.isInRegion ? left_ : 0) + numberAt(numbers, 1, 1) - 1);
        break;
    case 'I':
        tab(count);
        break;
    case 'Z':
        tab(-count);
        break;
    default:
        return false;
    }
    cursor_.wrapsNext = false;
    if (final == 'E' || final == 'F')
        obeyControl('\r');
    return true;
}

void Screen::obeyPlain(char final, const Numbers& numbers) {
    const int count = numberAt(numbers, 0, 1);
    const int part = numbers.front();
    switch (final) {
    case '@':
        insertColumns(count);
        break;
    case 'P':
        insertColumns(-count);
        break;
    case 'X':
        eraseInRow(cursor_.column, cursor_.column + count);
        break;
    case 'J':
        eraseDisplay(part);
        break;
    case 'K':
        eraseInRow(part == 0 ? cursor_.column : 0, part == 1 ? cursor_.column + 1 : columns());
        break;
    case 'L':
    case 'M':
        if (cursor_.row < top_ || cursor_.row > bottom_ || !isWithinMargins())
            return;
        scroll(cursor_.row, final == 'L' ? -count : count);
        obeyControl('\r');
        break;
    case 'S':
        scrollUp(count);
        break;
    case 'T':
        if (numbers.size() == 1)
            scroll(top_, -count);
        break;
    case 'b':
        for (int left = std::min(count, columns()); last_ != 0 && left > 0; --left)
            put(last_);
        return;
    case 'g':
        if (part == 3)
            tabs_.assign(tabs_.size(), false);
        else if (part == 0)
            tabs_[static_cast<std::size_t>(cursor_.column)] = false;
        return;
    case 'r':
        setRegion(count - 1, numberAt(numbers, 1, rows()) - 1);
        return;
    case 's':
        if (hasMargins_)
            setMargins(count - 1, numberAt(numbers, 1, columns()) - 1);
        else
            saved_[shown_] = cursor_;
        return;
    case 'u':
        restore();
        return;
    default:
        return;
    }
    if (final != 'S' && final != 'T')
        cursor_.wrapsNext = false;
}

void Screen::obeyModes(const Csi& csi) {
    const bool sets = csi.final == 'h';
    for (const std::int32_t mode : csi.numbers()) {
        if (csi.marker == "?")
            setPrivateMode(mode, sets);
        else if (csi.marker.empty() && mode == 4)
            inserts_ = sets;
        else if (csi.marker.empty() && mode == 20)
            returns_ = sets;
    }
}

void Screen::setPrivateMode(std::int32_t mode, bool sets) {
    switch (mode) {
    case 6:
        cursor_.isInRegion = sets;
        place(0, 0);
        return;
    case 7:
        wraps_ = sets;
        cursor_.wrapsNext = cursor_.wrapsNext && sets;
        return;
    case 69:
        hasMargins_ = sets;
        endMargins();
        cursor_.wrapsNext = cursor_.wrapsNext && isAtEdge(cursor_);
        return;
    case 1048:
        sets ? static_cast<void>(saved_[shown_] = cursor_) : restore();
        return;
    case 1049:
        if (sets)
            saved_[shown_] = cursor_;
        show(mode, sets);
        if (sets)
            eraseDisplay(2);
        else
            restore();
        return;
    case 1047:
        if (!sets && shown_ == alternateScreen)
            eraseDisplay(2);
        show(mode, sets);
        return;
    case 47:
        show(mode, sets);
        return;
    default:
        return;
    }
}

void Screen::endRegion() {
    top_ = 0;
    bottom_ = rows() - 1;
    endMargins();
}

void Screen::endMargins() {
    left_ = 0;
    right_ = columns() - 1;
}

void Screen::setRegion(int top, int bottom) {
    bottom = std::min(bottom, rows() - 1);
    if (top >= bottom)
        return;
    top_ = top;
    bottom_ = bottom;
    place(0, 0);
}

void Screen::setMargins(int left, int right) {
    right = std::min(right, columns() - 1);
    if (left >= right)
        return;
    left_ = left;
    right_ = right;
    place(0, 0);
}

char32_t Screen::translated(char32_t scalar) const {
    return drawsLines() && scalar >= '_' && scalar <= '~' ? lineDrawing[scalar - '_'] : scalar;
}

/// Writes characters. Most output is ASCII, and a run of it goes into a row at once.
void Screen::write(std::string_view text) {
    const bool isRun = text.size() > 1 && isAscii(text.front()) && !inserts_ && !drawsLines();
    if (!isRun) {
        for (const Text::Scalar& scalar : Text::Scalars(text))
            put(translated(scalar.value));
        return;
    }
    while (!text.empty()) {
        put(static_cast<char32_t>(text.front())); // into the next row, or the last column
        text.remove_prefix(1);
        if (cursor_.wrapsNext)
            continue;
        const auto room = static_cast<std::size_t>(rightEdge() - cursor_.column);
        const std::string_view run = text.substr(0, room);
        putRun(run);
        text.remove_prefix(run.size());
    }
}

/// Writes ASCII characters that end before the last column.
void Screen::putRun(std::string_view run) {
    if (run.empty())
        return;
    const int end = cursor_.column + static_cast<int>(run.size());
    split(cursor_.column);
    split(end);
    if (!isAnswering_ && grid().write(cursor_.row, cursor_.column, run, number(cursor_.style)))
        limit();
    cursor_.column = end;
    last_ = static_cast<char32_t>(run.back());
}

void Screen::put(char32_t scalar) {
    const int width = scalar < 0x7F ? 1 : utf8proc_charwidth(static_cast<utf8proc_int32_t>(scalar));
    if (width == 0) {
        combine(scalar);
        return;
    }
    if (width > columns())
        return;
    const bool isTooWide = cursor_.column + width - 1 > rightEdge();
    if (wraps_ && (cursor_.wrapsNext || isTooWide))
        wrap();
    else if (isTooWide)
        cursor_.column = rightEdge() - width + 1;
    if (inserts_)
        insertColumns(width);
    split(cursor_.column);
    split(cursor_.column + width);
    if (!isAnswering_)
        writeCells(scalar, width);
    last_ = scalar;
    const int edge = rightEdge();
    cursor_.wrapsNext = wraps_ && cursor_.column + width > edge;
    cursor_.column = std::min(cursor_.column + width, edge);
}

/// Goes on in the next row, and notes that the row continues there.
void Screen::wrap() {
    const bool goesOn = !isAnswering_ && (cursor_.row < rows() - 1 || bottom_ == rows() - 1);
    if (!isAnswering_)
        grid().row(cursor_.row).continues = goesOn;
    obeyControl('\r');
    const int row = cursor_.row;
    index();
    if (goesOn && cursor_.row == row && row > 0)
        grid().row(row - 1).continues = true; // the row has moved up
}

void Screen::writeCells(char32_t scalar, int width) {
    const std::uint16_t style = number(cursor_.style);
    bool grows =
        grid().write(cursor_.row, cursor_.column,
                     {.text = scalar, .style = style, .width = static_cast<std::uint8_t>(width)});
    if (width == 2)
        grows |= grid().write(cursor_.row, cursor_.column + 1,
                              {.text = ' ', .style = style, .width = 0});
    if (grows)
        limit();
}

/// Adds a combining character to the character before the cursor.
void Screen::combine(char32_t mark) {
    if (isAnswering_)
        return;
    int column = cursor_.wrapsNext ? cursor_.column : cursor_.column - 1;
    if (column > 0 && grid().at(cursor_.row, column).width == 0)
        --column;
    if (column < 0)
        return;
    Cell cell = grid().at(cursor_.row, column);
    ++lookups_;
    auto text = tables_.combined(cell.text, mark);
    if (!text && sweep())
        text = tables_.combined(cell.text, mark);
    cell.text = text.value_or(cell.text);
    if (grid().write(cursor_.row, column, cell))
        limit();
}

/// Makes a wide character blank if its right half is in this column, because one of its halves is
/// about to be written over.
void Screen::split(int column) {
    if (isAnswering_ || column <= 0 || column >= columns())
        return;
    if (grid().at(cursor_.row, column).width != 0)
        return;
    for (const int half : {column - 1, column}) {
        const std::uint16_t style = grid().at(cursor_.row, half).style;
        grid().write(cursor_.row, half, {.style = style});
    }
}

/// Forgets rows if there are too many cells: first those above the main screen, then those of the
/// screen that is not shown.
void Screen::limit() {
    std::size_t count = cells();
    for (; count > maxCells && grids_[mainScreen].above() > 0; count = cells())
        grids_[mainScreen].forgetAbove(1);
    for (const std::size_t which : {1 - shown_, shown_}) {
        for (int row = 0; row < rows() && count > maxCells; ++row) {
            if (which == shown_ && row == cursor_.row)
                continue;
            count -= grids_[which].row(row).cells.capacity();
            grids_[which].clear(row, 0);
            isWhole_ = false;
        }
    }
}

/// Puts the cursor into a row and a column, or as near as the screen or the region allows.
void Screen::place(int row, int column) {
    cursor_.row =
        std::clamp(row, cursor_.isInRegion ? top_ : 0, cursor_.isInRegion ? bottom_ : rows() - 1);
    cursor_.column = std::clamp(column, cursor_.isInRegion ? left_ : 0,
                                cursor_.isInRegion ? right_ : columns() - 1);
    cursor_.wrapsNext = false;
}

/// Moves the cursor, which does not leave the scrolling region if it is in it.
void Screen::moveRows(int rows) {
    const int first = cursor_.row >= top_ ? top_ : 0;
    const int last = cursor_.row <= bottom_ ? bottom_ : this->rows() - 1;
    cursor_.row = std::clamp(cursor_.row + rows, first, last);
}

void Screen::index() {
    cursor_.wrapsNext = false;
    if (cursor_.row != bottom_)
        cursor_.row = std::min(cursor_.row + 1, rows() - 1);
    else if (isWithinMargins())
        scrollUp(1);
}

void Screen::reverseIndex() {
    cursor_.wrapsNext = false;
    if (cursor_.row != top_)
        cursor_.row = std::max(cursor_.row - 1, 0);
    else if (isWithinMargins())
        scroll(top_, -1);
}

/// Scrolls the region up. What leaves the main screen there is kept, as some terminals do even
/// where the region begins further down.
void Screen::scrollUp(int rows) {
    if (shown_ == mainScreen && !hasMargins_ && !isAnswering_)
        grid().keep(top_, std::min(rows, bottom_ - top_ + 1));
    scroll(top_, rows);
}

void Screen::scroll(int top, int rows) {
    if (isAnswering_)
        return;
    ScreenGrid::Area area = region();
    area.top = top;
    grid().scroll(area, rows, erased(), columns());
    if (hasMargins_)
        limit();
}

void Screen::insertColumns(int count) {
    if (!isWithinMargins() || isAnswering_)
        return;
    split(cursor_.column);
    if (count < 0) {
        split(std::min(cursor_.column - count, columns()));
        grid().row(cursor_.row).continues = false;
    }
    grid().shift(cursor_.row, cursor_.column, rightEdge(), count, columns(), erased());
    if (const Cell last = grid().at(cursor_.row, rightEdge()); last.width == 2)
        grid().write(cursor_.row, rightEdge(), {.style = last.style});
    limit();
    cursor_.wrapsNext = false;
}

void Screen::eraseDisplay(int part) {
    const bool isWhole = part == 2 || (part == 0 && cursor_.row == 0 && cursor_.column == 0);
    if (part == 3 || (isWhole && shown_ == mainScreen))
        grids_[mainScreen].forgetAbove(grids_[mainScreen].above());
    if (part > 2)
        return;
    cursor_.wrapsNext = false;
    if (isAnswering_)
        return;
    const std::uint16_t style = erased();
    const int from = part == 0 ? cursor_.row + 1 : 0;
    const int to = part == 1 ? cursor_.row : rows();
    for (int row = from; row < to; ++row)
        grid().clear(row, style);
    if (part == 0)
        eraseInRow(cursor_.column, columns());
    else if (part == 1)
        eraseInRow(0, cursor_.column + 1);
}

void Screen::eraseInRow(int from, int to) {
    if (isAnswering_)
        return;
    to = std::min(to, columns());
    split(from);
    split(to);
    grid().erase(cursor_.row, from, to, columns(), erased());
    limit();
    if (to == columns())
        grid().row(cursor_.row).continues = false;
    if (from == 0 && cursor_.row > 0)
        grid().row(cursor_.row - 1).continues = false;
}

void Screen::tab(int count) {
    if (cursor_.wrapsNext && count > 0)
        return;
    const int last = rightEdge();
    const int step = count > 0 ? 1 : -1;
    for (; count != 0; count -= step) {
        do
            cursor_.column += step;
        while (cursor_.column > 0 && cursor_.column < last
               && !tabs_[static_cast<std::size_t>(cursor_.column)]);
        cursor_.column = std::clamp(cursor_.column, 0, last);
        if (cursor_.column == 0 || cursor_.column == last)
            break;
    }
    cursor_.wrapsNext = false;
}

void Screen::show(std::int32_t mode, bool alternate) {
    if (alternate && shown_ == mainScreen)
        alternateMode_ = mode;
    shown_ = alternate ? alternateScreen : mainScreen;
    cursor_.wrapsNext = false;
}

void Screen::restore() {
    cursor_ = withinRegion(saved_[shown_].value_or(Cursor{}));
    cursor_.wrapsNext = cursor_.wrapsNext && isAtEdge(cursor_);
}

/// Returns a saved cursor as near to its place as the region allows, if its rows are told from
/// there.
Screen::Cursor Screen::withinRegion(Cursor cursor) const {
    if (!cursor.isInRegion)
        return cursor;
    cursor.row = std::clamp(cursor.row, top_, bottom_);
    cursor.column = std::clamp(cursor.column, left_, right_);
    return cursor;
}

void Screen::reset() {
    forgetText();
    isWhole_ = true;
    shown_ = mainScreen;
    saved_ = {};
    cursor_ = {};
    returns_ = false;
    tabs_.assign(static_cast<std::size_t>(columns()), false);
    for (std::size_t column = 0; column < tabs_.size(); column += tabWidth)
        tabs_[column] = true;
    softReset();
}

void Screen::softReset() {
    endRegion();
    hasMargins_ = false;
    wraps_ = true;
    inserts_ = false;
    cursor_.isInRegion = false;
    cursor_.style = {};
    cursor_.charsets = {};
    saved_[shown_].reset();
}

void Screen::resize(PtyFrame::Size size) {
    if (size == size_)
        return;
    follow({});
    const PtyFrame::Size before = std::exchange(size_, size);
    if (isAnswering_)
        keepCursorsOnScreen();
    else
        resizeGrids(before);
    endRegion();
    const std::size_t known = tabs_.size();
    tabs_.resize(static_cast<std::size_t>(columns()), false);
    for (std::size_t column = known; column < tabs_.size(); ++column)
        tabs_[column] = column % tabWidth == 0;
}

/// Gives the grids the size of the screen, and moves the cursors with their text.
void Screen::resizeGrids(PtyFrame::Size before) {
    const bool isMain = shown_ == mainScreen;
    Cursor none;
    Cursor& hidden = saved_[mainScreen] ? *saved_[mainScreen] : none;
    Cursor& ofMain = isMain ? cursor_ : hidden;
    const ScreenGrid::Spot spot = grids_[mainScreen].reflow(
        rows(), before.cols, columns(),
        {.row = ofMain.row, .column = ofMain.column + (ofMain.wrapsNext ? 1 : 0)});
    const int lost = isMain ? 0 : std::max(cursor_.row - (rows() - 1), 0);
    grids_[alternateScreen].resize(rows(), columns(), lost);
    cursor_.row -= lost;
    keepCursorsOnScreen();
    ofMain.row = spot.row;
    ofMain.column = std::min(spot.column, columns() - 1);
    ofMain.wrapsNext = spot.column == columns() && wraps_;
    limit();
}

void Screen::keepCursorsOnScreen() {
    for (auto& saved : saved_) {
        if (saved)
            keepOnScreen(*saved);
    }
    keepOnScreen(cursor_);
}

void Screen::keepOnScreen(Cursor& cursor) const {
    cursor.row = std::min(cursor.row, rows() - 1);
    cursor.column = std::min(cursor.column, columns() - 1);
    cursor.wrapsNext = false;
}

bool Screen::isWithinMargins() const {
    return cursor_.column >= left_ && cursor_.column <= right_;
}

/// Returns the number by which a cell refers to the style.
std::uint16_t Screen::number(const CellStyle& style) {
    if (numbered_ && numbered_->first == style)
        return numbered_->second;
    ++lookups_;
    auto number = tables_.styleNumber(style);
    if (!number && sweep())
        number = tables_.styleNumber(style);
    numbered_.emplace(style, number.value_or(0));
    return numbered_->second;
}

/// Returns the style of what is erased now: it has the background that the program has set.
std::uint16_t Screen::erased() {
    return number({.background = cursor_.style.background});
}

/// Finds out what of the tables is in use. Returns false if that was done a short while ago: what
/// is new has no place then, since a program may use more than the tables contain.
bool Screen::sweep() {
    if (lookups_ < sweepPeriod)
        return false;
    lookups_ = 0;
    tables_.beginSweep();
    for (const ScreenGrid& each : grids_)
        each.use(tables_);
    tables_.use(cursor_.style);
    for (const auto& saved : saved_) {
        if (saved)
            tables_.use(saved->style);
    }
    numbered_.reset();
    return true;
}

Screen::Place Screen::cursor() const {
    const int top = cursor_.isInRegion ? top_ : 0;
    const int left = cursor_.isInRegion ? left_ : 0;
    return {.row = cursor_.row - top + 1, .column = cursor_.column - left + 1};
}

void Screen::beginAnswering() {
    isAnswering_ = true;
    grids_ = {};
    tables_ = {};
    modes_ = {};
}

void Screen::forgetText() {
    for (ScreenGrid& each : grids_) {
        each.forgetAbove(each.above());
        for (int row = 0; row < each.rows(); ++row)
            each.clear(row, 0);
    }
}

} // namespace velmo
