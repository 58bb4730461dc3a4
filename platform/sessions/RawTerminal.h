#pragma once

#include <sys/types.h>
#include <termios.h>

#include <optional>

namespace velmo {

/// The user's terminal in raw mode: what is typed reaches this process byte for byte, Ctrl-C and
/// Ctrl-Z included. It is restored when the object goes, and also when the process crashes. There
/// is one at a time.
class RawTerminal {
public:
    /// Sets the terminal to raw mode; absent if the descriptor is none.
    static std::optional<RawTerminal> enter(int descriptor);

    /// Sets raw mode anew: while this process was stopped, the shell had the terminal.
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
