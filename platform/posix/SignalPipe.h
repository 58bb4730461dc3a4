#pragma once

#include "platform/posix/Descriptor.h"

#include <optional>
#include <span>

namespace velmo {

/// Turns signals into something to read from a descriptor. There is at most one at a time in a
/// process, on its main thread.
class SignalPipe {
public:
    struct News {
        int signal = 0;
        /// Whether a process has sent it, to us alone as far as we know. False for what the
        /// terminal sends, which all of its foreground group gets.
        bool fromProcess = false;
    };

    /// Takes these signals over until its end, when they have their default effect again.
    explicit SignalPipe(std::span<const int> signals);
    ~SignalPipe();

    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    /// Takes one more signal over, or the same one once more.
    static void take(int signal);

    /// Readable while there is news. Negative if the system had no descriptors for it.
    [[nodiscard]] int descriptor() const { return readEnd_.get(); }

    /// Returns the next signal that came in; absent if there is none at the moment.
    std::optional<News> next();

private:
    Descriptor readEnd_;
    Descriptor writeEnd_;
};

} // namespace velmo
