#include "tools/velmo-power/StatusDisplay.h"

#include "platform/posix/StandardStreams.h"

#include <unistd.h>

#include <utility>

namespace velmo {

namespace {

/// To the first column, and erase to the end of the line.
constexpr std::string_view eraseLine = "\r\x1b[K";

} // namespace

StatusDisplay::StatusDisplay(int descriptor, bool live)
    : descriptor_(descriptor), live_(live && ::isatty(descriptor) == 1) {
}

void StatusDisplay::say(std::string_view text) {
    clear();
    write(std::string(text) + "\n");
}

void StatusDisplay::showNow(std::string_view text) {
    if (!live_)
        return;
    write(std::string(eraseLine).append(text));
    drawn_ = true;
}

void StatusDisplay::clear() {
    if (std::exchange(drawn_, false))
        write(eraseLine);
}

void StatusDisplay::write(std::string_view text) const {
    if (descriptor_ == STDERR_FILENO)
        writeStandardError(text);
    else
        offerStandardOutput(text);
}

} // namespace velmo
