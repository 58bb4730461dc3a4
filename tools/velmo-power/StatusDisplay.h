#pragma once

#include "platform/posix/BackgroundWriter.h"

#include <chrono>
#include <string>
#include <string_view>

namespace velmo {

/// Shows the state of a hold. Every change is a line of its own; in the foreground of a terminal a
/// last line is redrawn in place. Waits for no reader: what can't be written is dropped.
class StatusDisplay {
public:
    /// `descriptor` is standard output or standard error; `live` asks for the line that is redrawn.
    StatusDisplay(int descriptor, bool live);

    /// Tells whether the redrawn line would be seen: on a terminal that can erase, with this
    /// process in its foreground.
    [[nodiscard]] bool isLive() const;

    /// Writes a line that stays.
    void say(std::string_view text);

    /// Redraws the line that says how things are now, cut to the columns of the terminal. Skipped
    /// while the line would not be seen or earlier output is still to be written.
    void showNow(std::string_view text);

    /// Erases the redrawn line.
    void clear();

    /// Waits until all is written, but not longer than `patience`. Returns whether all is written.
    bool finish(std::chrono::milliseconds patience) { return writer_.finish(patience); }

private:
    int descriptor_;
    bool live_;
    bool drawn_ = false;
    BackgroundWriter writer_;
};

} // namespace velmo
