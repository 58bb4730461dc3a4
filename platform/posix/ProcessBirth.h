#pragma once

#include <csignal>
#include <vector>

namespace velmo {

/// How this process was born: the signals that it found ignored or blocked, and the descriptors
/// that it found open. A program that it runs on its user's behalf must find the same, whatever
/// this process has done to itself since. To be read at the very start of `main`.
class ProcessBirth {
public:
    static ProcessBirth read();

    /// Tells whether the signal was ignored, as `nohup` and a shell's background jobs have it. Such
    /// a signal stays ignored: whoever started us wants it so.
    [[nodiscard]] bool ignored(int signal) const { return sigismember(&ignored_, signal) == 1; }

    /// Marks every descriptor that was opened since as one that no program inherits.
    void keepLaterDescriptors() const;

    /// Makes the calling process as it was born: dispositions, mask, and the standard descriptors
    /// that were closed. Only for a child between fork and exec: it calls nothing that is not safe
    /// there.
    void restore() const;

private:
    ProcessBirth() = default;

    [[nodiscard]] bool hadOpen(int descriptor) const;

    sigset_t ignored_{};
    sigset_t mask_{};
    std::vector<int> descriptors_;  ///< open ones, in ascending order
    bool knowsDescriptors_ = false; ///< false where the system does not list them
};

} // namespace velmo
