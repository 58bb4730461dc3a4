#pragma once

#include "platform/posix/Descriptor.h"

#include <optional>
#include <span>

namespace velmo {

/// Turns signals into something to read from a descriptor. A process has at most one object of this
/// class at a time, on its main thread.
class SignalPipe {
public:
    struct News {
        int signal = 0;
        /// True for a signal of the terminal, which its whole foreground group gets. False if a
        /// process has sent the signal, as far as we know to this process alone.
        bool fromTerminal = false;
    };

    /// Takes these signals over. The destructor gives them their default effect again.
    explicit SignalPipe(std::span<const int> signals);
    ~SignalPipe();

    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    /// Takes one more signal over, or takes one over again that has got another handler since.
    static void take(int signal);

    /// Returns a descriptor that is readable while a signal waits for `next`; negative if the
    /// system had no descriptors left.
    [[nodiscard]] int descriptor() const { return readEnd_.get(); }

    /// Returns the next signal that came in; absent if none waits.
    std::optional<News> next();

private:
    Descriptor readEnd_;
    Descriptor writeEnd_;
};

} // namespace velmo
