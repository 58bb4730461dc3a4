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

/// Names a session within the host. No number is used again.
enum class SessionNumber : std::uint64_t {};

/// A program on a pseudo-terminal of its own. That there is output, or room for input, and that the
/// program has ended is told to the `SessionHost`. When the object goes, the pseudo-terminal is
/// closed, which hangs up on what still runs on it.
class Program {
public:
    struct Output {
        std::size_t bytes = 0; ///< 0: none now
        bool isOver = false;   ///< there will be none any more
    };

    virtual ~Program() = default;

    /// Returns the process id.
    [[nodiscard]] virtual std::uint32_t pid() const = 0;

    /// Reads into the room, without waiting.
    [[nodiscard]] virtual Output read(std::span<std::uint8_t> room) = 0;

    /// Types as much as the program's terminal takes without waiting, and returns how much.
    [[nodiscard]] virtual std::size_t write(ByteView keys) = 0;

    /// Sets the window size; programs are told of it if it is another one than before.
    virtual void setSize(PtyFrame::Size size) = 0;

    /// Sends a signal to the job in the foreground.
    virtual void signalForeground(int signal) = 0;

    /// Sends a signal to every process group of the session, and tells whether there is any. Signal
    /// 0 only asks.
    virtual bool signalAll(int signal) = 0;

    /// Says what the host wants to be told from now on.
    virtual void watch(bool readable, bool writable) = 0;
};

/// Starts programs.
class Programs {
public:
    virtual ~Programs() = default;

    /// Starts a program that the spawn policy has allowed, with exactly this environment. Returns
    /// none if the system refuses.
    [[nodiscard]] virtual std::shared_ptr<Program> start(SessionNumber session,
                                                         const SpawnRequest& request,
                                                         const Pty::Environment& environment) = 0;
};

} // namespace velmo
