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

#include <array>
#include <optional>
#include <vector>

namespace velmo {

namespace {

constexpr std::size_t maxInput = std::size_t{1} << 16; // bytes

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

/// Copies the bytes that can be read to the other descriptor and returns them. Absent at the end of
/// the input and on an error.
std::optional<ByteView> relay(int from, int to, std::vector<std::uint8_t>& room) {
    const ssize_t count = retryInterrupted([&] { return ::read(from, room.data(), room.size()); });
    if (count <= 0)
        return std::nullopt;
    const ByteView bytes = ByteView(room).first(static_cast<std::size_t>(count));
    return writeAll(to, textOf(bytes)) ? std::optional(bytes) : std::nullopt;
}

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
    ExitWatch watch;
    watch.look(bytesOf(host->rest()));
    if (!writeAll(STDOUT_FILENO, host->rest()))
        return SessionExit::success;
    std::vector<std::uint8_t> room(maxInput);
    bool inputIsOpen = true;
    while (true) {
        std::array<pollfd, 2> watched{
            pollfd{.fd = inputIsOpen ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0},
            pollfd{.fd = host->get(), .events = POLLIN, .revents = 0}};
        if (retryInterrupted([&] { return ::poll(watched.data(), watched.size(), -1); }) < 0)
            return SessionExit::hostGone;
        if (watched[1].revents != 0) {
            const auto frames = relay(host->get(), STDOUT_FILENO, room);
            if (!frames)
                return watch.code().value_or(inputIsOpen ? SessionExit::hostGone
                                                         : SessionExit::success);
            watch.look(*frames);
        }
        // The end of the input ends the view: the host sees that this side is gone.
        if (watched[0].revents != 0 && !relay(STDIN_FILENO, host->get(), room)) {
            inputIsOpen = false;
            ::shutdown(host->get(), SHUT_WR);
        }
    }
}

} // namespace velmo
