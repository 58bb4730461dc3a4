#pragma once

#include <string>
#include <string_view>

namespace velmo {

/// Shows where a hold stands. On a terminal there is one line, which is drawn anew; elsewhere every
/// change is a line of its own.
class StatusDisplay {
public:
    /// `descriptor` is standard output or standard error; `live` asks for the line that is drawn
    /// anew, which only a terminal gets.
    StatusDisplay(int descriptor, bool live);

    [[nodiscard]] bool isLive() const { return live_; }

    /// Something happened: worth a line that stays.
    void say(std::string_view text);

    /// How things are now; on a terminal only.
    void showNow(std::string_view text);

private:
    void clear();
    void write(std::string_view text) const;

    int descriptor_;
    bool live_;
    bool drawn_ = false;
};

} // namespace velmo
