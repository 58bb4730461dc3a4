#include "tools/velmo-session/ListCommand.h"

#include "core/output/Output.h"
#include "platform/posix/Clocks.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/ListText.h"
#include "tools/velmo-session/Print.h"

#include <unistd.h>

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velmo {

namespace {

constexpr std::chrono::seconds watchPeriod{1};
constexpr std::string_view clearScreen = "\033[H\033[2J";

using Sessions = std::vector<SessionEntry>;

/// Returns the sessions. The error is an exit status.
std::expected<Sessions, int> sessionsOfHost() {
    auto host = ControlClient::connect();
    auto reply = host ? host->call({.call = SessionCall::list}) : std::nullopt;
    if (host && !reply)
        return std::unexpected(complain("the session host gives no answer", SessionExit::hostGone));
    return reply ? reply->sessions.value_or(Sessions()) : Sessions();
}

std::string listing(const Sessions& sessions, bool isJson) {
    if (!isJson)
        return listText(sessions, Clocks::wallTime());
    std::string text;
    Output::print(sessions, [&text](std::string_view line) { text = line; });
    return text;
}

/// Draws a screen anew each second, since the ages change, and prints to anything else only what
/// has changed.
int watch(bool isJson) {
    const bool isScreen = !isJson && ::isatty(STDOUT_FILENO) == 1;
    std::optional<Sessions> last;
    while (true) {
        auto sessions = sessionsOfHost();
        if (!sessions)
            return sessions.error();
        int status = SessionExit::success;
        if (isScreen)
            status = print(std::string(clearScreen) + listing(*sessions, isJson));
        else if (sessions != last)
            status = print(listing(*sessions, isJson));
        if (status != SessionExit::success)
            return status;
        last = *std::move(sessions);
        std::this_thread::sleep_for(watchPeriod);
    }
}

} // namespace

int list(const ListRequest& request) {
    if (request.isWatched)
        return watch(request.isJson);
    const auto sessions = sessionsOfHost();
    return sessions ? print(listing(*sessions, request.isJson)) : sessions.error();
}

} // namespace velmo
