#include "tools/velmo-power/StatusDisplay.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace velmo {

namespace {

/// Goes to the first column and erases to the end of the line.
constexpr std::string_view eraseLine = "\r\x1b[K";

constexpr std::size_t usualColumns = 80;

bool canErase(int descriptor) {
    const char* const terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): at the start
    return ::isatty(descriptor) == 1
           && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

std::size_t columns(int descriptor) {
    winsize size{};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                          : usualColumns;
}

} // namespace

StatusDisplay::StatusDisplay(int descriptor, bool live)
    : descriptor_(descriptor), live_(live && canErase(descriptor)), writer_(descriptor) {
}

bool StatusDisplay::isLive() const {
    if (!live_)
        return false;
    // A terminal other than the controlling one has no foreground for this process to be in.
    const pid_t foreground = ::tcgetpgrp(descriptor_);
    return foreground < 0 || foreground == ::getpgrp();
}

void StatusDisplay::say(std::string_view text) {
    clear();
    writer_.write(std::string(text) + "\n");
}

void StatusDisplay::showNow(std::string_view text) {
    // A stopped terminal would later get every line that it has missed.
    if (!isLive() || !writer_.isIdle())
        return;
    // The last column stays free: some terminals wrap as soon as it is written.
    writer_.write(std::string(eraseLine).append(text.substr(0, columns(descriptor_) - 1)));
    drawn_ = true;
}

void StatusDisplay::clear() {
    if (std::exchange(drawn_, false) && isLive())
        writer_.write(std::string(eraseLine));
}

} // namespace velmo
