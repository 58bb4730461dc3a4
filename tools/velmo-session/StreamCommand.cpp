#include "tools/velmo-session/StreamCommand.h"

#include "core/support/BigEndian.h"
#include "core/terminal/PtyFrame.h"
#include "platform/posix/Io.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/Refusals.h"
#include "tools/velmo-session/SessionExit.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <utility>
#include <vector>

namespace velmo {

namespace {

constexpr std::size_t maxPiece = std::size_t{1} << 16; // bytes that are read at once

/// Finds the exit code in the frames that are relayed.
class ExitWatch {
public:
    void look(ByteView frames) {
        for (const PtyFrame::Frame& frame :
             decoder_.feed(frames).value_or(std::vector<PtyFrame::Frame>())) {
            if (frame.kind == PtyFrame::Kind::exit)
                code_ = static_cast<int>(BigEndian::read(frame.payload));
        }
    }

    [[nodiscard]] std::optional<int> code() const { return code_; }

private:
    PtyFrame::Decoder decoder_;
    std::optional<int> code_;
};

/// Returns what can be read; absent at the end of the input and on an error.
std::optional<ByteView> readSome(int from, std::vector<std::uint8_t>& room) {
    const ssize_t count = retryInterrupted([&] { return ::read(from, room.data(), room.size()); });
    if (count <= 0)
        return std::nullopt;
    return ByteView(room).first(static_cast<std::size_t>(count));
}

/// Relays both ways until one side ends. Neither way waits for the other: what is typed gets
/// through while the output is not read.
class Relay {
public:
    explicit Relay(ControlClient host) : host_(std::move(host)) { take(bytesOf(host_.rest())); }

    /// Returns the exit status.
    int run() {
        while (!status_)
            step();
        return *status_;
    }

private:
    void step() {
        enum { keys, host, display };

        std::array<pollfd, 3> watched{};
        const bool mayType = inputIsOpen_ && toHost_.empty();
        watched[keys] = {.fd = mayType ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0};
        const auto in = static_cast<short>(toShow_.empty() ? POLLIN : 0);
        const auto out = static_cast<short>(toHost_.empty() ? 0 : POLLOUT);
        watched[host] = {.fd = (in | out) != 0 ? host_.get() : -1,
                         .events = static_cast<short>(in | out),
                         .revents = 0};
        watched[display] = {
            .fd = toShow_.empty() ? -1 : STDOUT_FILENO, .events = POLLOUT, .revents = 0};
        if (retryInterrupted([&] { return ::poll(watched.data(), watched.size(), -1); }) < 0)
            return end();
        if (watched[keys].revents != 0)
            readKeys();
        if ((watched[host].revents & POLLOUT) != 0)
            sendKeys();
        if ((watched[host].revents & ~POLLOUT) != 0 && in != 0)
            readHost();
        if (watched[display].revents != 0)
            show();
    }

    /// The end of the input ends the view: the host sees that this side is gone.
    void readKeys() {
        if (const auto typed = readSome(STDIN_FILENO, typed_))
            toHost_ = *typed;
        else
            endInput();
    }

    void sendKeys() {
        const ssize_t count = retryInterrupted(
            [&] { return ::send(host_.get(), toHost_.data(), toHost_.size(), MSG_DONTWAIT); });
        if (count >= 0)
            toHost_ = toHost_.subspan(static_cast<std::size_t>(count));
        else if (errno != EAGAIN)
            endInput();
    }

    void endInput() {
        inputIsOpen_ = false;
        toHost_ = {};
        ::shutdown(host_.get(), SHUT_WR);
    }

    void readHost() {
        const auto frames = readSome(host_.get(), output_);
        frames ? take(*frames) : end();
    }

    void take(ByteView frames) {
        watch_.look(frames);
        toShow_ = frames;
    }

    /// Writes as much as a pipe that has room takes without waiting.
    void show() {
        const std::size_t piece = std::min<std::size_t>(toShow_.size(), PIPE_BUF);
        const ssize_t count =
            retryInterrupted([&] { return ::write(STDOUT_FILENO, toShow_.data(), piece); });
        if (count < 0)
            return end();
        toShow_ = toShow_.subspan(static_cast<std::size_t>(count));
    }

    void end() {
        status_ =
            watch_.code().value_or(inputIsOpen_ ? SessionExit::hostGone : SessionExit::success);
    }

    ControlClient host_;
    ExitWatch watch_;
    std::vector<std::uint8_t> typed_ = std::vector<std::uint8_t>(maxPiece);
    std::vector<std::uint8_t> output_ = std::vector<std::uint8_t>(maxPiece);
    ByteView toHost_; ///< of what was typed
    ByteView toShow_; ///< of the output
    bool inputIsOpen_ = true;
    std::optional<int> status_;
};

} // namespace

int stream(const std::string& session, bool isViewOnly) {
    auto host = ControlClient::connect();
    const auto reply =
        host ? host->call({.call = SessionCall::stream, .session = session, .viewOnly = isViewOnly})
             : std::nullopt;
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (!reply->ok)
        return complain(refusalText(SessionCall::stream, *reply), SessionExit::refused);
    return Relay(*std::move(host)).run();
}

} // namespace velmo
