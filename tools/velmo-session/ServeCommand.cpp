#include "tools/velmo-session/ServeCommand.h"

#include "core/terminal/AttachTicket.h"
#include "platform/host/PtyHostFileSystem.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/Io.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/sessions/PrivateFolder.h"
#include "platform/sessions/PtyPrograms.h"
#include "platform/sessions/SessionDoors.h"
#include "platform/sessions/SystemRandom.h"
#include "platform/sessions/TranscriptDisk.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/SessionExit.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <utility>

namespace velmo {

namespace {

/// Enough descriptors for the greatest number of sessions and viewers.
constexpr std::size_t descriptors = 4096;

constexpr off_t maxLog = 1 << 20; // bytes

/// How often an idle host keeps the folder in use. A system that clears unused files does so after
/// days. A Mac may have slept through these days, and the timer stands still meanwhile, so that
/// little of the period may be left. Asio's kqueue wakes up as often anyway.
constexpr std::chrono::minutes idleUpkeepPeriod{5};

/// How often a host with sessions looks whether clients still find it.
constexpr std::chrono::minutes upkeepPeriod{1};

/// How long a host in the background stays without a session or a connection.
constexpr std::chrono::seconds idlePatience{10};

/// The host's log: a file, which begins anew when it has grown too long, or standard error.
class Log {
public:
    explicit Log(Descriptor file) : file_(std::move(file)) {}

    /// Goes on in another file, if this log has one.
    void moveTo(Descriptor file) {
        if (file_ && file)
            file_ = std::move(file);
    }

    void operator()(std::string_view message) const {
        const std::string line = "velmo-session: " + std::string(message) + "\n";
        if (!file_) {
            writeStandardError(line);
            return;
        }
        struct stat status{};
        const bool isFull = ::fstat(file_.get(), &status) == 0 && status.st_size >= maxLog;
        if (!isFull || ::ftruncate(file_.get(), 0) == 0)
            writeAll(file_.get(), line);
    }

private:
    Descriptor file_;
};

/// Returns why the right to serve was not given.
std::string lockFault(const PrivateFolder& folder, pid_t holder) {
    if (holder == PrivateFolder::noLock)
        return folder.path(PrivateFolder::lockFile) + " can't be made: is the disk full?";
    return "a host serves already"
           + (holder == 0 ? std::string() : ": process " + std::to_string(holder));
}

/// Tells the client that has started this host, and reads its standard error, that the host serves.
void closeStandardError() {
    const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    ::dup2(null.get(), STDERR_FILENO);
}

class Server {
public:
    Server(PrivateFolder folder, Descriptor right, ServeMode mode, const rlimit& openFiles)
        : folder_(std::move(folder)),
          right_(std::move(right)),
          mode_(mode),
          log_(mode == ServeMode::background ? folder_.openLog() : Descriptor()),
          programs_(context_, programEvents(), openFiles),
          host_(services()),
          doors_(context_, host_, [this] { settle(); }),
          stop_(context_),
          upkeepAsked_(context_, SIGUSR1),
          deadline_(context_),
          upkeep_(context_),
          idle_(context_) {
        for (const int signal : endingSignals())
            stop_.add(signal);
    }

    int run() {
        folder_.removeTickets();
        if (!open(SessionHost::Door::attach) || !open(SessionHost::Door::control))
            return complain("no socket can be made in " + folder_.folder() + ": is the disk full?",
                            SessionExit::refused);
        log_("serving in " + folder_.folder());
        stop_.async_wait([this](const std::error_code& aborted, int /*signal*/) {
            if (!aborted)
                context_.stop();
        });
        if (mode_ == ServeMode::background)
            closeStandardError();
        waitToBeAskedForUpkeep();
        waitForUpkeep();
        settle();
        context_.run();
        log_("ends");
        if (!folder_.isServedBy(right_))
            return SessionExit::success; // another host may serve there
        folder_.removeTickets();
        for (const auto& [door, name] : sockets)
            folder_.remove(std::string(name));
        return SessionExit::success;
    }

private:
    static constexpr auto sockets = std::to_array<std::pair<SessionHost::Door, std::string_view>>({
        {SessionHost::Door::attach, PtyAttach::socketName},
        {SessionHost::Door::control, PrivateFolder::controlSocket},
    });

    PtyPrograms::Events programEvents() {
        return {.ready =
                    [this](SessionNumber session) {
                        host_.programReady(session);
                        settle();
                    },
                .ended =
                    [this](SessionNumber session, std::int32_t status) {
                        host_.programEnded(session, status);
                        settle();
                    }};
    }

    SessionHost::Services services() {
        return {.programs = programs_,
                .tickets = folder_,
                .transcripts = transcripts_,
                .files = files_,
                .steadyTime = Clocks::steadyTime,
                .wallTime = Clocks::wallTime,
                .random = fillWithRandomBytes,
                .log = [this](std::string_view message) { log_(message); }};
    }

    bool open(SessionHost::Door door) {
        const auto* const found =
            std::ranges::find(sockets, door, &decltype(sockets)::value_type::first);
        return doors_.open(door, folder_.path(found->second));
    }

    /// Sets the timers for the host's next deadline, and for its end if it may end.
    void settle() {
        const auto due = host_.deadline();
        if (due != due_) {
            due_ = due;
            deadline_.cancel();
            if (due)
                waitUntil(*due);
        }
        const bool isIdle = host_.isIdle();
        if (isIdle == std::exchange(isIdle_, isIdle))
            return;
        waitForUpkeep();
        if (mode_ == ServeMode::background)
            isIdle ? waitForNobody() : static_cast<void>(idle_.cancel());
    }

    void waitUntil(SteadyTime due) {
        // Without the margin, a timer that fires early would fire again at once.
        constexpr double margin = 0.001;
        const double left = std::max(due - Clocks::steadyTime(), 0.0) + margin;
        deadline_.expires_after(Clocks::duration(left));
        deadline_.async_wait([this](const std::error_code& aborted) {
            if (aborted)
                return;
            due_.reset();
            host_.timePasses();
            settle();
        });
    }

    void waitForNobody() {
        idle_.expires_after(idlePatience);
        idle_.async_wait([this](const std::error_code& aborted) {
            if (!aborted && host_.isIdle())
                context_.stop();
        });
    }

    void waitForUpkeep() {
        upkeep_.expires_after(isIdle_ ? idleUpkeepPeriod : upkeepPeriod);
        upkeep_.async_wait([this](const std::error_code& aborted) {
            if (aborted)
                return;
            lookAfterFolder();
            waitForUpkeep();
        });
    }

    void waitToBeAskedForUpkeep() {
        upkeepAsked_.async_wait([this](const std::error_code& aborted, int /*signal*/) {
            if (aborted)
                return;
            lookAfterFolder();
            waitToBeAskedForUpkeep();
        });
    }

    /// Makes the folder anew if it is gone, binds sockets anew that have been removed from it, and
    /// marks the files as in use.
    void lookAfterFolder() {
        if (!folder_.isServedBy(right_) && !serveInNewFolder())
            return;
        for (const auto& [door, name] : sockets) {
            if (folder_.has(std::string(name)))
                continue;
            log_(std::string(name) + " was gone");
            if (!open(door))
                log_(std::string(name) + " can't be bound anew");
        }
        host_.renewAgentLinks();
        folder_.touch();
    }

    /// Takes the right to serve where the folder's path leads now. Returns false if
    /// the folder can't be made, or another host serves there.
    bool serveInNewFolder() {
        log_("the folder or its lock is gone");
        auto folder = PrivateFolder::make();
        if (!folder) {
            log_(folder.error());
            return false;
        }
        auto right = folder->lock();
        if (!right) {
            log_(lockFault(*folder, right.error()));
            return false;
        }
        folder_ = *std::move(folder);
        right_ = *std::move(right);
        log_.moveTo(folder_.openLog());
        for (const auto& [door, name] : sockets) {
            if (!open(door))
                log_(std::string(name) + " can't be bound");
        }
        log_("serving in " + folder_.folder() + " anew");
        return true;
    }

    asio::io_context context_{1};
    PrivateFolder folder_;
    Descriptor right_; ///< the lock that gives the right to serve
    ServeMode mode_;
    Log log_;
    Pty::HostFileSystem files_;
    TranscriptDisk transcripts_;
    PtyPrograms programs_;
    SessionHost host_;
    SessionDoors doors_;
    asio::signal_set stop_;
    asio::signal_set upkeepAsked_;
    asio::steady_timer deadline_;
    asio::steady_timer upkeep_;
    asio::steady_timer idle_;
    std::optional<SteadyTime> due_;
    bool isIdle_ = false;
};

} // namespace

int serve(ServeMode mode) {
    // A transcript at the greatest length that a file may have ends; the sessions go on.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    rlimit openFiles{};
    ::getrlimit(RLIMIT_NOFILE, &openFiles);
    allowDescriptors(descriptors);
    auto folder = PrivateFolder::make();
    if (!folder)
        return complain(folder.error(), SessionExit::refused);
    auto right = folder->lock();
    if (!right) {
        // A client that starts hosts until one serves is told nothing of a host that was quicker.
        const bool isSilent =
            mode == ServeMode::background && right.error() != PrivateFolder::noLock;
        return isSilent ? SessionExit::refused
                        : complain(lockFault(*folder, right.error()), SessionExit::refused);
    }
    if (mode == ServeMode::background && ::chdir("/") != 0)
        return SessionExit::refused;
    return Server(*std::move(folder), *std::move(right), mode, openFiles).run();
}

} // namespace velmo
