#include "tools/velmo-session/ControlClient.h"

#include "platform/posix/Io.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/Pipe.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/PrivateFolder.h"
#include "platform/sessions/PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <thread>

namespace velmo {

namespace {

constexpr std::chrono::milliseconds startPatience{5000};
constexpr std::chrono::milliseconds startPause{50};
constexpr std::size_t maxFault = 1024; // bytes
constexpr timeval replyPatience{.tv_sec = 10, .tv_usec = 0};

using Clock = std::chrono::steady_clock;

/// Sets how long a read waits; 0: without end.
bool limitWaits(int socket, const timeval& patience) {
    return ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) == 0;
}

/// Reads what arrives by then, up to the end.
std::string readUntil(Clock::time_point deadline, int descriptor) {
    std::string text;
    while (text.size() < maxFault) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd watched{.fd = descriptor, .events = POLLIN, .revents = 0};
        const int timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        std::array<char, maxFault> room{};
        if (retryInterrupted([&] { return ::poll(&watched, 1, timeout); }) != 1)
            break;
        const ssize_t count =
            retryInterrupted([&] { return ::read(descriptor, room.data(), room.size()); });
        if (count <= 0)
            break;
        text.append(room.data(), static_cast<std::size_t>(count));
    }
    return text;
}

/// Returns the fault in what a host has written, without the program's name.
std::string faultIn(std::string_view text) {
    constexpr std::string_view name = "velmo-session: ";
    const std::string_view line = text.substr(0, text.find('\n'));
    return std::string(line.starts_with(name) ? line.substr(name.size()) : line);
}

/// Starts a host that outlives this process and its terminal, and waits until the host serves or
/// ends. Returns why it can't serve; empty if it does, and if another host was quicker.
std::string startHost(Clock::time_point deadline) {
    const std::string program = ownExecutable().string();
    auto told = makePipe();
    const pid_t child = told ? ::fork() : -1;
    if (child == 0) {
        // The host is a grandchild, so that no process of ours has to wait for its end.
        if (::setsid() < 0 || ::fork() != 0)
            ::_exit(0);
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(told->writeEnd.get(), STDERR_FILENO);
        closeDescriptorsFrom(STDERR_FILENO + 1);
        ::execl(program.c_str(), "velmo-session", "serve", "--background", nullptr);
        ::_exit(1);
    }
    if (child < 0)
        return "the system could not start the session host";
    retryInterrupted([&] { return ::waitpid(child, nullptr, 0); });
    told->writeEnd.reset();
    return faultIn(readUntil(deadline, told->readEnd.get()));
}

} // namespace

std::optional<ControlClient> ControlClient::connect() {
    const auto folder = PrivateFolder::locate();
    if (!folder)
        return std::nullopt;
    Descriptor socket =
        LocalSocket::connect(*folder + "/" + std::string(PrivateFolder::controlSocket));
    // The time limit keeps a host that does not answer, such as a stopped one, from blocking us.
    if (!socket || !limitWaits(socket.get(), replyPatience))
        return std::nullopt;
    return ControlClient(std::move(socket));
}

std::expected<ControlClient, std::string> ControlClient::connectOrStart() {
    const auto deadline = Clock::now() + startPatience;
    // A host that is just ending keeps a new one from serving, so the start is repeated.
    while (true) {
        if (auto client = connect())
            return *std::move(client);
        if (Clock::now() >= deadline)
            return std::unexpected(std::string(hostUnreachable));
        if (std::string fault = startHost(deadline); !fault.empty())
            return std::unexpected(std::move(fault));
        if (auto client = connect())
            return *std::move(client);
        std::this_thread::sleep_for(startPause);
    }
}

std::optional<SessionReplyLine> ControlClient::ask(const SessionCallLine& call) {
    auto host = connect();
    return host ? host->call(call) : std::nullopt;
}

std::optional<SessionReplyLine> ControlClient::callAndWait(const SessionCallLine& call) {
    constexpr timeval forEver{};
    return limitWaits(get(), forEver) ? this->call(call) : std::nullopt;
}

std::optional<SessionReplyLine> ControlClient::call(const SessionCallLine& call) {
    const auto line = encodeJson(call);
    if (!line || !writeAll(socket_.get(), *line + "\n"))
        return std::nullopt;
    std::size_t end = std::string::npos;
    while ((end = received_.find('\n')) == std::string::npos) {
        std::array<char, 4096> buffer{};
        const ssize_t count =
            retryInterrupted([&] { return ::read(get(), buffer.data(), buffer.size()); });
        if (count <= 0 || received_.size() > maxSessionLine)
            return std::nullopt;
        received_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    auto reply = decodeRecord<SessionReplyLine>(std::string_view(received_).substr(0, end));
    received_.erase(0, end + 1);
    return reply;
}

} // namespace velmo
