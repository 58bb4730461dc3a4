#include "tools/velmo-session/AttachCommand.h"

#include "core/terminal/PtyAttach.h"
#include "core/terminal/SpelledDetachKey.h"
#include "core/terminal/TerminalModes.h"
#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/SignalPipe.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/RawTerminal.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/SessionExit.h"
#include "tools/velmo-session/TerminalSize.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <deque>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace velmo {

namespace {

using namespace PtyAttach;

constexpr std::size_t maxOutput = std::size_t{1} << 18; // bytes of output at once
constexpr std::size_t maxTyped = 4096;                  // bytes of keys at once
constexpr std::string_view badMessage = "bad-message";

/// How a view ended.
struct Ending {
    int exitStatus;
    std::string text; ///< for the user; empty: nothing to say
};

std::int64_t milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/// Opens the terminal under a file description of our own, so that the non-blocking mode does not
/// reach other processes that have the terminal open. Returns a copy of standard output where that
/// is not a terminal.
Descriptor openDisplay() {
    const char* const name = ::ttyname(STDOUT_FILENO); // NOLINT(concurrency-mt-unsafe)
    if (name != nullptr) {
        constexpr int flags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        if (Descriptor own(::open(name, flags)); own)
            return own;
    }
    return Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

/// Relays between the user's terminal and the host until one of them ends it.
class View {
public:
    View(Descriptor host, SignalPipe& signals, const std::optional<RawTerminal>& terminal,
         const DetachChoice& detachChoice)
        : host_(std::move(host)),
          display_(openDisplay()),
          signals_(signals),
          terminal_(terminal),
          detachChoice_(detachChoice),
          room_(maxOutput) {
        const int flags = ::fcntl(host_.get(), F_GETFL);
        ::fcntl(host_.get(), F_SETFL, flags | O_NONBLOCK);
    }

    void tellHost(ByteView frames) { toHost_.insert(toHost_.end(), frames.begin(), frames.end()); }

    /// Returns what puts the user's terminal back as far as a program's output has set it.
    [[nodiscard]] std::string undo() const { return shownModes_.undo(); }

    Ending run() {
        while (!ending_ || !toShow_.empty())
            step();
        flushToHost();
        return *std::move(ending_);
    }

private:
    void step() {
        enum { signal, keys, host, display };

        std::array<pollfd, 4> watched{};
        watched[signal] = {.fd = signals_.descriptor(), .events = POLLIN, .revents = 0};
        const bool mayType = toHost_.empty() && !typingIsOver_ && !ending_;
        watched[keys] = {.fd = mayType ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0};
        const auto in = static_cast<short>(toShow_.empty() && !ending_ ? POLLIN : 0);
        const auto out = static_cast<short>(toHost_.empty() ? 0 : POLLOUT);
        watched[host] = {.fd = (in | out) != 0 ? host_.get() : -1,
                         .events = static_cast<short>(in | out),
                         .revents = 0};
        watched[display] = {
            .fd = toShow_.empty() ? -1 : display_.get(), .events = POLLOUT, .revents = 0};
        if (::poll(watched.data(), watched.size(), timeout()) < 0)
            return; // interrupted by a signal, which is in the pipe
        if (watched[signal].revents != 0)
            takeSignals();
        tickDetachKey();
        if (watched[keys].revents != 0)
            readKeys();
        if ((watched[host].revents & POLLOUT) != 0)
            flushToHost();
        if ((watched[host].revents & (POLLIN | POLLHUP | POLLERR)) != 0 && in != 0)
            readHost();
        if (watched[display].revents != 0)
            flushToDisplay();
    }

    /// Returns the milliseconds until a typed Control-] goes to the program; -1 if none waits.
    [[nodiscard]] int timeout() const {
        const auto deadline = detachKey_.deadlineMs();
        return deadline ? static_cast<int>(std::max<std::int64_t>(*deadline - milliseconds(), 0))
                        : -1;
    }

    void tickDetachKey() {
        if (const Bytes released = detachKey_.tick(milliseconds()); !released.empty())
            tellHost(PtyAttach::data(detachChoice_.swapped(released)));
    }

    void takeSignals() {
        while (const auto news = signals_.next()) {
            if (news->signal == SIGCONT && terminal_)
                terminal_->renew();
            if (news->signal == SIGWINCH || news->signal == SIGCONT) {
                tellSize();
                continue;
            }
            tellHost(hangupFrame);
            end({.exitStatus = SessionExit::bySignal + news->signal, .text = ""});
            toShow_.clear();
        }
    }

    void readKeys() {
        std::array<std::uint8_t, maxTyped> typed{};
        const ssize_t count =
            retryInterrupted([&] { return ::read(STDIN_FILENO, typed.data(), typed.size()); });
        if (count <= 0) {
            typingIsOver_ = count == 0 || errno != EAGAIN;
            // Of a terminal in raw mode that is the window's end, and nothing else.
            if (typingIsOver_ && terminal_) {
                tellHost(hangupFrame);
                end({.exitStatus = SessionExit::bySignal + SIGHUP, .text = ""});
                toShow_.clear();
            }
            return;
        }
        const Bytes keys =
            detachChoice_.swapped(ByteView(typed).first(static_cast<std::size_t>(count)));
        const DetachKey::Result result = detachKey_.feed(keys, milliseconds());
        if (!result.forward.empty())
            tellHost(PtyAttach::data(detachChoice_.swapped(result.forward)));
        if (result.detach) {
            tellHost(detachFrame);
            end({.exitStatus = SessionExit::success, .text = labels_.detached});
        }
        flushToHost();
    }

    void flushToHost() {
        while (!toHost_.empty()) {
            const ssize_t count = retryInterrupted(
                [&] { return ::write(host_.get(), toHost_.data(), toHost_.size()); });
            if (count < 0) {
                if (errno != EAGAIN)
                    toHost_.clear(); // that the host is gone shows when it is read from
                return;
            }
            toHost_.erase(toHost_.begin(), toHost_.begin() + count);
        }
    }

    void readHost() {
        const ssize_t count =
            retryInterrupted([&] { return ::read(host_.get(), room_.data(), room_.size()); });
        if (count < 0 && errno == EAGAIN)
            return;
        if (count <= 0) {
            end({.exitStatus = SessionExit::hostGone, .text = labels_.hostGone});
            return;
        }
        auto frames = decoder_.feed(ByteView(room_).first(static_cast<std::size_t>(count)));
        if (!frames) {
            end({.exitStatus = SessionExit::refused, .text = fill(labels_.error, badMessage)});
            return;
        }
        for (Frame& frame : *frames) {
            if (auto* const output = std::get_if<Bytes>(&frame)) {
                shownModes_.follow(*output);
                toShow_.push_back(std::move(*output));
                continue;
            }
            obey(message(std::get<ControlObject>(frame).object()));
        }
        flushToDisplay();
    }

    void obey(const HostMessage& said) {
        if (const auto* const ready = std::get_if<host::Ready>(&said)) {
            labels_ = ready->labels;
            if (!ready->name.empty() && ::isatty(STDOUT_FILENO) == 1)
                show(titleSequence(ready->name));
        } else if (const auto* const exit = std::get_if<host::Exit>(&said)) {
            end({.exitStatus = exit->code, .text = fill(labels_.exit, std::to_string(exit->code))});
        } else if (const auto* const error = std::get_if<host::Error>(&said);
                   error != nullptr && error->code == "detached") {
            end({.exitStatus = SessionExit::success, .text = labels_.detached});
        } else if (error != nullptr) {
            end({.exitStatus = SessionExit::refused,
                 .text =
                     error->code == "ended" ? labels_.ended : fill(labels_.error, error->code)});
        } else if (std::holds_alternative<host::Size>(said)) {
            tellSize();
        }
    }

    /// Tells the host the size. The host makes the program draw anew even if the size is the same.
    void tellSize() {
        const PtyFrame::Size size = terminalSize();
        tellHost(resize(size.cols, size.rows));
    }

    void show(std::string_view text) {
        const ByteView bytes = bytesOf(text);
        toShow_.emplace_back(bytes.begin(), bytes.end());
    }

    void flushToDisplay() {
        while (!toShow_.empty()) {
            const ByteView next = ByteView(toShow_.front()).subspan(shown_);
            const ssize_t count =
                retryInterrupted([&] { return ::write(display_.get(), next.data(), next.size()); });
            if (count < 0 && errno == EAGAIN)
                return;
            if (count < 0) { // nobody looks any more
                // Whether a closed window shows here first or where keys are read is chance.
                const int signal = errno == EIO ? SIGHUP : SIGPIPE;
                toShow_.clear();
                tellHost(hangupFrame);
                end({.exitStatus = SessionExit::bySignal + signal, .text = ""});
                return;
            }
            shown_ += static_cast<std::size_t>(count);
            if (shown_ == toShow_.front().size()) {
                toShow_.pop_front();
                shown_ = 0;
            }
        }
    }

    /// Ends the view. If that happens more than once, the first ending counts.
    void end(Ending ending) {
        if (!ending_)
            ending_ = std::move(ending);
    }

    Descriptor host_;
    Descriptor display_;
    SignalPipe& signals_;
    const std::optional<RawTerminal>& terminal_; ///< absent if the input is not a terminal
    DetachChoice detachChoice_;
    Bytes room_;
    Decoder decoder_;
    Bytes toHost_;
    std::deque<Bytes> toShow_;
    std::size_t shown_ = 0; ///< bytes of the first of these
    SpelledDetachKey detachKey_;
    TerminalModes shownModes_; ///< of the user's terminal, as far as its output was ours
    bool typingIsOver_ = false;
    Labels labels_;
    std::optional<Ending> ending_;
};

} // namespace

int attach(const std::string& ticketFile, const DetachChoice& detachChoice) {
    HostFileSystem files;
    const auto ticket = readTicket(ticketFile, files);
    if (!ticket)
        return complain(message(ticket.error()), SessionExit::refused);
    Descriptor host = LocalSocket::connect(ticket->endpoint);
    std::vector<int> caught = endingSignals();
    caught.insert(caught.end(), {SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGWINCH, SIGCONT});
    SignalPipe signals(caught);
    if (!host || signals.descriptor() < 0)
        return complain(english().hostGone, SessionExit::hostGone);
    const PtyFrame::Size size = terminalSize();
    Ending ending{};
    {
        const auto raw = RawTerminal::enter(STDIN_FILENO);
        View view(std::move(host), signals, raw, detachChoice);
        view.tellHost(hello(ticket->token, size.cols, size.rows).value()); // a token is short
        ending = view.run();
        if (::isatty(STDOUT_FILENO) == 1)
            offerStandardOutput(view.undo() + std::string(reset));
    }
    if (!ending.text.empty())
        writeStandardError(ending.text + "\n");
    return ending.exitStatus;
}

} // namespace velmo
