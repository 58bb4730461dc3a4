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

/// A program that runs beside this one while its standard output and error are read as lines. Plays
/// of the daemon's life with real processes use it. The destructor kills the program, if need be,
/// and waits for its end.
class WatchedProcess {
public:
    using OnLine = std::function<void(const std::string& line)>;

    /// The waits below give up after this time, which is far beyond what any of them needs.
    static constexpr std::chrono::seconds patience{20};

    /// Starts the program. `onLine` is called for every line as it is read. Throws
    /// std::system_error if the program can't be started.
    explicit WatchedProcess(const std::string& program, std::span<const std::string_view> arguments,
                            OnLine onLine = {}, ChildGroup group = ChildGroup::ofParent);
    WatchedProcess(const WatchedProcess&) = delete;
    WatchedProcess& operator=(const WatchedProcess&) = delete;
    ~WatchedProcess();

    [[nodiscard]] pid_t pid() const { return pid_; }

    /// Reads on until a line has come that contains the text and that no earlier wait has used up.
    /// Returns false if the output or the patience ended before that.
    [[nodiscard]] bool waitForLine(std::string_view text);

    /// Sends the program a signal.
    void signal(int number) const;

    /// Kills a program that has a process group of its own, with all that it has started, and waits
    /// for its end. launchd treats a job that has crashed in this way.
    void killGroup();

    /// Closes the reading end of the output, as if its reader had gone.
    void closeOutput() { output_.reset(); }

    /// Reads to the end of the output and returns the status as a shell tells it; absent if the
    /// program does not end within patience.
    [[nodiscard]] std::optional<int> waitForEnd();

    /// Returns every line read so far.
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
