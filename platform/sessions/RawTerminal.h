#pragma once

#include <sys/types.h>
#include <termios.h>

#include <optional>

namespace velmo {

/// The user's terminal in raw mode: keys reach this process byte for byte, Ctrl-C and Ctrl-Z
/// included. The destructor restores the terminal, and so does a handler if the process crashes. A
/// process has at most one such object at a time.
class RawTerminal {
public:
    /// Sets the terminal to raw mode; absent if the descriptor is not a terminal.
    static std::optional<RawTerminal> enter(int descriptor);

    /// Sets raw mode anew, after this process was stopped and the shell had the terminal.
    void renew() const;

    RawTerminal(RawTerminal&& other) noexcept;
    RawTerminal& operator=(RawTerminal&&) = delete;
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;
    ~RawTerminal();

private:
    RawTerminal() = default;

    bool isOwner_ = true;
};

} // namespace velmo
