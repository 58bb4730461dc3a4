#include "tools/velmo-session/ControlClient.h"

#include "platform/posix/Io.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/PrivateFolder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>

namespace velmo {

namespace {

constexpr std::chrono::milliseconds startPatience{5000};
constexpr std::chrono::milliseconds startStep{5};
constexpr int stepsPerStart = 100;
constexpr timeval replyPatience{.tv_sec = 10, .tv_usec = 0};

/// Starts a host that outlives this process and its terminal. The host serves once its socket can
/// be connected to, and ends by itself if another host was quicker.
void startHost() {
    const std::string program = ownExecutable().string();
    const pid_t child = ::fork();
    if (child == 0) {
        // The host is a grandchild, so that no process of ours has to wait for its end.
        if (::setsid() < 0 || ::fork() != 0)
            ::_exit(0);
        const int null = ::open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(null, standard);
        ::execl(program.c_str(), "velmo-session", "serve", "--background", nullptr);
        ::_exit(1);
    }
    if (child > 0)
        retryInterrupted([&] { return ::waitpid(child, nullptr, 0); });
}

} // namespace

std::optional<ControlClient> ControlClient::connect() {
    const auto folder = PrivateFolder::locate();
    if (!folder)
        return std::nullopt;
    Descriptor socket =
        LocalSocket::connect(*folder + "/" + std::string(PrivateFolder::controlSocket));
    // The time limit keeps a host that does not answer, such as a stopped one, from blocking us.
    if (!socket
        || ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &replyPatience, sizeof replyPatience)
               != 0)
        return std::nullopt;
    return ControlClient(std::move(socket));
}

std::optional<ControlClient> ControlClient::connectOrStart() {
    if (auto client = connect())
        return client;
    const auto deadline = std::chrono::steady_clock::now() + startPatience;
    for (int step = 0; std::chrono::steady_clock::now() < deadline; ++step) {
        // A host that is just ending keeps a new one from serving, so the start is repeated.
        if (step % stepsPerStart == 0)
            startHost();
        if (auto client = connect())
            return client;
        std::this_thread::sleep_for(startStep);
    }
    return std::nullopt;
}

std::optional<SessionReplyLine> ControlClient::ask(const SessionCallLine& call) {
    auto host = connect();
    return host ? host->call(call) : std::nullopt;
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

std::string refusalText(const SessionReplyLine& reply) {
    const std::string reason = reply.reason.value_or("");
    const auto refusal = fromRawText<SessionRefusal>(reason);
    if (!refusal)
        return "refused: " + reason; // a reason that only a newer host has
    switch (*refusal) {
    case SessionRefusal::call:
        return "the host does not know this call";
    case SessionRefusal::words:
        return "the program may not be started with these arguments";
    case SessionRefusal::folder:
        return "no session may work in this folder";
    case SessionRefusal::program:
        return "this program may not run in a session";
    case SessionRefusal::name:
        return "a session of this name runs already";
    case SessionRefusal::misnamed:
        return "no session can have this name";
    case SessionRefusal::limit:
        return "there are as many as there may be";
    case SessionRefusal::system:
        return "the system could not start it";
    case SessionRefusal::itself:
        return "a session can't be shown in itself";
    case SessionRefusal::unknown:
        return "there is no such session";
    case SessionRefusal::ended:
        break;
    }
    return "the session has ended";
}

} // namespace velmo
