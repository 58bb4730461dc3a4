#pragma once

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Descriptor.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A program that runs beside this one while its standard output and error are read as lines. For
/// whoever plays a life of the daemon with real processes. Killed, if need be, and waited for at
/// the end.
class WatchedProcess {
public:
    using OnLine = std::function<void(const std::string& line)>;

    /// How long the waits below take until they give up: far beyond what anything here needs.
    static constexpr std::chrono::seconds patience{20};

    /// `onLine` hears of every line as it is read. Throws std::system_error when the program can't
    /// be started.
    explicit WatchedProcess(const std::string& program, std::span<const std::string_view> arguments,
                            OnLine onLine = {}, ChildGroup group = ChildGroup::ofParent);
    WatchedProcess(const WatchedProcess&) = delete;
    WatchedProcess& operator=(const WatchedProcess&) = delete;
    ~WatchedProcess();

    [[nodiscard]] pid_t pid() const { return pid_; }

    /// Reads on until a line that holds the text has come that no earlier wait has used up. False
    /// when the output ended, or patience did, without it.
    [[nodiscard]] bool waitForLine(std::string_view text);

    void signal(int number) const;

    /// Of a program in a group of its own: kills it and what it has started, and waits for it, as
    /// launchd does with a job that has crashed.
    void killGroup();

    /// Stops reading, as a reader who goes away.
    void closeOutput() { output_.reset(); }

    /// Reads to the end of the output and answers the status as a shell tells it; absent when the
    /// program does not end.
    [[nodiscard]] std::optional<int> waitForEnd();

    /// Every line read so far.
    [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }

private:
    enum class Reading { gotSome, ended, timedOut };
    Reading readSome(std::chrono::steady_clock::time_point deadline);
    void takeLines();

    pid_t pid_ = 0;
    bool reaped_ = false;
    Descriptor output_;
    OnLine onLine_;
    std::string partial_;
    std::vector<std::string> lines_;
    std::size_t used_ = 0; ///< lines that waits have used up
};

} // namespace velmo
