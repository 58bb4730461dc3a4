#include "fuzz/Fuzz.h"
#include "sessions/Screen.h"

namespace velmo::Fuzz {

namespace {

/// The input is two sizes and output, cut in two. The screen must not depend on the cut nor take
/// more cells than it may, also where it changes its size there and back; drawn on another screen,
/// also over what that shows, it must look the same there, and be drawn the same. A screen that
/// only answers must take no cells at all.
void checkScreens(Input input) {
    const auto nextSize = [&] {
        return PtyFrame::Size{.cols = 1 + input.byte() % 100, .rows = 1 + input.byte() % 50};
    };
    const PtyFrame::Size first = nextSize();
    const PtyFrame::Size second = nextSize();
    const std::size_t cut = input.byte();
    const ByteView output = input.restBytes();
    const ByteView head = output.first(std::min(cut, output.size()));
    const ByteView tail = output.subspan(head.size());
    Screen screen(first);
    Screen cutScreen(first);
    screen.follow(output);
    cutScreen.follow(head);
    cutScreen.follow(tail);
    require(screen.drawn(first) == cutScreen.drawn(first));
    Screen resized(first);
    resized.followAhead(head);
    resized.resize(second);
    resized.follow(tail);
    Screen answering(first);
    answering.beginAnswering();
    answering.follow(head);
    answering.resize(second);
    answering.follow(tail);
    require(answering.cells() == 0);
    for (const PtyFrame::Size size : {first, second, first}) {
        screen.resize(size);
        resized.resize(size);
        if (resized.isWhole() && resized.isAlternate() == screen.isAlternate()) {
            Screen terminal = screen;
            terminal.follow(bytesOf(resized.drawnAnew(Screen::Part::all)));
            require(terminal.text() == resized.text());
            require(terminal.cursor() == resized.cursor());
        }
        require(screen.cells() <= Screen::maxCells + static_cast<std::size_t>(size.cols) + 64);
        Screen other(size);
        other.follow(bytesOf(screen.drawn(size)));
        require(other.text() == screen.text());
        require(other.cursor() == screen.cursor());
        require(other.drawn(size) == screen.drawn(size));
        Screen narrow(first);
        narrow.follow(bytesOf(screen.drawn(std::nullopt)));
    }
}

const Target screensTarget("Screens", checkScreens);

} // namespace

} // namespace velmo::Fuzz
