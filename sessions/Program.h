#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/Pty.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/SpawnRequest.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace velmo {

/// Names a session within the host. A number is never used again.
enum class SessionNumber : std::uint64_t {};

/// A program on a pseudo-terminal of its own. An implementation tells the `SessionHost` when there
/// is output or room for input, and when the program has ended. The destructor closes the
/// pseudo-terminal, which hangs up on the processes that still run on it.
class Program {
public:
    struct Output {
        std::size_t bytes = 0; ///< 0: nothing to read at the moment
        bool isOver = false;   ///< the output has ended
    };

    virtual ~Program() = default;

    /// Returns the process id.
    [[nodiscard]] virtual std::uint32_t pid() const = 0;

    /// Reads into the room, without waiting.
    [[nodiscard]] virtual Output read(std::span<std::uint8_t> room) = 0;

    /// Types as much as the program's terminal takes without waiting, and returns how much.
    [[nodiscard]] virtual std::size_t write(ByteView keys) = 0;

    /// Sets the window size. Programs are told of it only if the size has changed.
    virtual void setSize(PtyFrame::Size size) = 0;

    /// Sends a signal to the job in the foreground.
    virtual void signalForeground(int signal) = 0;

    /// Sends a signal to every process group of the session, and tells whether any is left. Signal
    /// 0 sends nothing and only asks.
    virtual bool signalAll(int signal) = 0;

    /// Sets what the host is told from now on: that there is output (`readable`), and that there is
    /// room for input (`writable`).
    virtual void watch(bool readable, bool writable) = 0;
};

/// Starts programs.
class Programs {
public:
    virtual ~Programs() = default;

    /// Starts a program that the spawn policy has allowed, with exactly this environment. Returns
    /// null if the system refuses.
    [[nodiscard]] virtual std::shared_ptr<Program> start(SessionNumber session,
                                                         const SpawnRequest& request,
                                                         const Pty::Environment& environment) = 0;
};

} // namespace velmo
