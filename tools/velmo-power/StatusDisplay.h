#pragma once

#include "platform/posix/BackgroundWriter.h"

#include <chrono>
#include <string>
#include <string_view>

namespace velmo {

/// Shows where a hold stands. In the foreground of a terminal there is one line, which is drawn
/// anew; every change is a line of its own. It waits for no reader: what can't be written is
/// dropped.
class StatusDisplay {
public:
    /// `descriptor` is standard output or standard error; `live` asks for the line that is drawn
    /// anew.
    StatusDisplay(int descriptor, bool live);

    /// Tells whether the line would be seen: a terminal that can erase shows it, and this process
    /// is in its foreground.
    [[nodiscard]] bool isLive() const;

    /// Something happened: worth a line that stays.
    void say(std::string_view text);

    /// How things are now, in as many columns as there are.
    void showNow(std::string_view text);

    /// Takes the line that is drawn anew away.
    void clear();

    /// Waits until all is written, but not for long.
    bool finish(std::chrono::milliseconds patience) { return writer_.finish(patience); }

private:
    int descriptor_;
    bool live_;
    bool drawn_ = false;
    BackgroundWriter writer_;
};

} // namespace velmo
