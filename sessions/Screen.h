#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/ControlSequence.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/SequenceReader.h"
#include "core/terminal/TerminalModes.h"
#include "sessions/ScreenGrid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// What a terminal of xterm's kind shows after a program's output: the main and the alternate
/// screen with text, attributes, colours, links and prompts, the cursor, and the modes. The last
/// rows that have scrolled off the main screen's top come back when the screen grows; all others
/// are forgotten, and so are these when the whole screen is erased. Pictures are not known. Accepts
/// any bytes, cut anywhere.
///
/// A screen takes at most about 192 KiB, whatever its size: if its cells would take more, the rows
/// at the top are forgotten, first those that have scrolled off, then those of the screen that is
/// not shown. Blanks at the end of a row are no cells, so that the latter happens beyond about 120
/// columns by 40 rows of full lines on both screens, or 200 by 50 on one.
class Screen {
public:
    static constexpr std::size_t maxCells = std::size_t{10} << 10; ///< with memory, of both screens

    explicit Screen(PtyFrame::Size size);

    /// Follows the next output. Many lines at once cost about as much as a search for ESC, since
    /// lines that scroll off the top are not written first.
    void follow(ByteView output) { follow(output, Lines::areWritten); }

    /// Follows output before more, which comes by `follow`, if only as an empty piece, before the
    /// screen is asked for anything. The lines at the end may wait until then, since they may
    /// scroll off.
    void followAhead(ByteView output) { follow(output, Lines::mayWait); }

    /// Returns whether the output so far ends outside of any sequence and character.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    [[nodiscard]] PtyFrame::Size size() const { return size_; }

    /// Gives the screen another size. The main screen does what `ScreenGrid::reflow` says. Of the
    /// alternate one, lines are cut at the right and at the bottom; at the top only as far as the
    /// cursor's line would not fit otherwise.
    void resize(PtyFrame::Size size);

    enum class Part {
        all,
        withoutMainRows, ///< the alternate screen if that is shown, and the modes
    };

    /// Returns what makes a terminal show the same that has just been reset and shows nothing below
    /// its cursor. On a terminal of the screen's size the cursor must be at the top left: `size` is
    /// the terminal's size then. On any other terminal, lines are broken where its own edge is.
    [[nodiscard]] std::string drawn(std::optional<PtyFrame::Size> size,
                                    Part part = Part::all) const;

    /// Returns what makes a terminal of the screen's size, which shows something else on the same
    /// one of its two screens, show this one instead. The lines that have scrolled off its top are
    /// left as they are. Without the main rows, the screen must be the alternate one.
    [[nodiscard]] std::string drawnAnew(Part part) const;

    /// Tells whether no rows on the screens were forgotten for their number of cells.
    [[nodiscard]] bool isWhole() const { return isWhole_; }

    /// Returns the lines that are shown, without blanks at their ends, up to the last one with
    /// text.
    [[nodiscard]] std::vector<std::string> text() const;

    struct Place {
        int row;    ///< from 1
        int column; ///< from 1

        bool operator==(const Place&) const = default;
    };

    /// Returns where the cursor is, as the program is told upon CSI 6 n.
    [[nodiscard]] Place cursor() const;

    [[nodiscard]] bool isAlternate() const { return shown_ == 1; }

    [[nodiscard]] const TerminalModes& modes() const { return modes_; }

    /// Forgets what is shown. From here on the screen follows only the cursor, and answers queries
    /// as xterm does: is the terminal well (CSI 5 n), where is the cursor (CSI 6 n), which kind of
    /// terminal is it (CSI c), which version of it (CSI > c).
    void beginAnswering();

    /// Returns the answers since the last call; beyond the first few thousand bytes they are
    /// dropped.
    [[nodiscard]] std::string takeAnswers() { return std::exchange(answers_, {}); }

    /// Returns the number of cells that take memory; at most a row more than `maxCells`.
    [[nodiscard]] std::size_t cells() const { return grids_[0].cells() + grids_[1].cells(); }

private:
    static constexpr std::size_t mainScreen = 0;
    static constexpr std::size_t alternateScreen = 1;
    static constexpr int tabWidth = 8;

    struct Charsets {
        static constexpr char plain = 'B';
        static constexpr char lineDrawing = '0';

        std::array<char, 2> sets{plain, plain}; ///< G0 and G1
        std::size_t current = 0;
    };

    struct Cursor {
        int row = 0;
        int column = 0;
        bool wrapsNext = false;  ///< the next character goes to the next row
        bool isInRegion = false; ///< rows are told from the top of the scrolling region
        CellStyle style;
        Charsets charsets;
    };

    enum class Lines { areWritten, mayWait };

    void follow(ByteView output, Lines lastLines);
    [[nodiscard]] std::size_t skip(std::string_view lines);
    [[nodiscard]] std::size_t skipRows(std::string_view lines, int enough) const;
    void takeStyle(std::string_view lines);
    void obey(const SequenceReader::Sequence& sequence);
    void followModes(const SequenceReader::Sequence& sequence);
    void obeyControl(char control);
    void obeyEscape(std::string_view escape);
    void obeyOsc(std::string_view osc);
    void obeyCsi(const ControlSequence::Csi& csi);
    void answer(const ControlSequence::Csi& csi);
    void obeyPlain(char final, const ControlSequence::Numbers& numbers);
    bool move(char final, const ControlSequence::Numbers& numbers);
    void obeyModes(const ControlSequence::Csi& csi);
    void setPrivateMode(std::int32_t mode, bool sets);
    void setRegion(int top, int bottom);
    void setMargins(int left, int right);
    void endRegion();
    void endMargins();
    void write(std::string_view text);
    void putRun(std::string_view run);
    void put(char32_t scalar);
    void wrap();
    void writeCells(char32_t scalar, int width);
    void combine(char32_t mark);
    [[nodiscard]] char32_t translated(char32_t scalar) const;

    [[nodiscard]] bool drawsLines() const {
        return cursor_.charsets.sets[cursor_.charsets.current] == Charsets::lineDrawing;
    }

    void split(int column);
    void limit();
    void forgetText();
    void fillToAlign();
    void place(int row, int column);
    void moveRows(int rows);
    void index();
    void reverseIndex();
    void scrollUp(int rows);
    void scroll(int top, int rows);
    void insertColumns(int count);
    void eraseDisplay(int part);
    void eraseInRow(int from, int to);
    void tab(int count);
    void show(std::int32_t mode, bool alternate);
    void restore();
    [[nodiscard]] Cursor withinRegion(Cursor cursor) const;
    void keepOnScreen(Cursor& cursor) const;
    void keepCursorsOnScreen();
    void resizeGrids(PtyFrame::Size before);
    void reset();
    void softReset();
    [[nodiscard]] std::uint16_t number(const CellStyle& style);
    [[nodiscard]] std::uint16_t erased();
    bool sweep();

    [[nodiscard]] int columns() const { return size_.cols; }

    [[nodiscard]] int rows() const { return size_.rows; }

    [[nodiscard]] bool isWithinMargins() const;

    /// Returns the last column that text from this column on gets to in its row.
    [[nodiscard]] int rightEdge(int column) const {
        return column <= right_ ? right_ : columns() - 1;
    }

    [[nodiscard]] int rightEdge() const { return rightEdge(cursor_.column); }

    [[nodiscard]] bool isAtEdge(const Cursor& cursor) const {
        return cursor.column == rightEdge(cursor.column);
    }

    [[nodiscard]] ScreenGrid& grid() { return grids_[shown_]; }

    [[nodiscard]] const ScreenGrid& grid() const { return grids_[shown_]; }

    [[nodiscard]] ScreenGrid::Area region() const {
        return {.top = top_, .bottom = bottom_, .left = left_, .right = right_};
    }

    void drawMain(std::string& text, bool isSame) const;
    void drawTabs(std::string& text) const;
    void drawRows(std::string& text, std::size_t which, int last, int maxColumns) const;
    void drawRegion(std::string& text) const;
    void drawStyle(std::string& text, const CellStyle& before, const CellStyle& style) const;
    void drawCursor(std::string& text, std::size_t which, const Cursor& cursor) const;
    void drawStyleAndCharsets(std::string& text, const CellStyle& before,
                              const Cursor& cursor) const;

    PtyFrame::Size size_;
    SequenceReader reader_;
    std::string waiting_; ///< lines that are not written yet
    TerminalModes modes_;
    CellTables tables_;
    std::array<ScreenGrid, 2> grids_; ///< the main screen and the alternate one; without any row
                                      ///<   while the screen answers
    std::size_t shown_ = 0;           ///< of these
    std::int32_t alternateMode_ = 0;  ///< that the program has set to show the alternate screen
    Cursor cursor_;
    std::array<std::optional<Cursor>, 2> saved_; ///< of these
    int top_ = 0;                                ///< the first row of the scrolling region,
    int bottom_ = 0;                             ///<   the last,
    int left_ = 0;                               ///<   its first column
    int right_ = 0;                              ///<   and its last
    bool hasMargins_ = false;
    bool wraps_ = true;
    bool inserts_ = false;
    bool returns_ = false; ///< with each line feed
    std::vector<bool> tabs_;
    char32_t last_ = 0; ///< the last character, which a program may repeat
    bool isWhole_ = true;
    bool isAnswering_ = false;
    std::string answers_;
    int lookups_ = 0; ///< in the tables, since the last sweep
    std::optional<std::pair<CellStyle, std::uint16_t>> numbered_; ///< the last style that was
};

} // namespace velmo
