#pragma once

#include <csignal>
#include <vector>

namespace velmo {

/// What this process found when it started: the signals that were ignored or blocked, and the
/// descriptors that were open. A command that it runs on its user's behalf must find the same,
/// whatever this process has changed since. Read this at the very start of `main`.
class ProcessBirth {
public:
    static ProcessBirth read();

    /// Tells whether the signal was ignored, as it is under `nohup` and in a shell's background
    /// jobs. Such a signal stays ignored, since the process that started this one wants it so.
    [[nodiscard]] bool ignored(int signal) const { return sigismember(&ignored_, signal) == 1; }

    /// Marks every descriptor that was opened since the start as closed on exec, so that no program
    /// inherits it.
    void keepLaterDescriptors() const;

    /// Restores the calling process to this state: dispositions, mask, and the standard descriptors
    /// that were closed. Only for a child between fork and exec; every call it makes is safe there.
    void restore() const;

private:
    ProcessBirth() = default;

    [[nodiscard]] bool hadOpen(int descriptor) const;

    sigset_t ignored_{};
    sigset_t mask_{};
    std::vector<int> descriptors_;  ///< that were open, in ascending order
    bool knowsDescriptors_ = false; ///< false where the system does not list them
};

} // namespace velmo
