/// velmo-session: terminal sessions that go on when their window closes.

#include "core/terminal/PtyAttach.h"
#include "platform/posix/ProcessSetup.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/ListCommand.h"
#include "tools/velmo-session/Print.h"
#include "tools/velmo-session/Refusals.h"
#include "tools/velmo-session/ServeCommand.h"
#include "tools/velmo-session/ServiceCommand.h"
#include "tools/velmo-session/SessionCommandLine.h"
#include "tools/velmo-session/SessionExit.h"
#include "tools/velmo-session/StartCommand.h"
#include "tools/velmo-session/StreamCommand.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velmo;

std::optional<std::string> optionOf(const CommandLine::Line& line, std::string_view name) {
    return line.value(name).transform([](std::string_view value) { return std::string(value); });
}

int end(const std::string& session) {
    const auto reply = ControlClient::ask({.call = SessionCall::end, .session = session});
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    return reply->ok ? SessionExit::success
                     : complain(refusalText(SessionCall::end, *reply), SessionExit::refused);
}

/// Runs the attach client. The arguments are the same in every program that contains the client.
int ptyAttach(std::span<const std::string_view> arguments) {
    const std::vector<std::string> words(arguments.begin(), arguments.end());
    const auto parsed = PtyAttach::parseArguments(words);
    if (!parsed)
        return complain("pty-attach takes --ticket-file and an absolute path, or --probe",
                        SessionExit::usage);
    if (const auto* const ticket = std::get_if<PtyAttach::TicketArguments>(&*parsed))
        return attach(ticket->path);
    return print(std::string(PtyAttach::probeReply) + "\n");
}

int run(const CommandLine::Line& line, std::span<const std::string_view> arguments) {
    const std::string_view verb = line.verb->name;
    if (verb == SessionVerb::serve)
        return serve(line.has("--background") ? ServeMode::background : ServeMode::foreground);
    if (verb == SessionVerb::start)
        return start({.folder = optionOf(line, "--cwd"),
                      .name = optionOf(line, "--name"),
                      .isDetached = line.has("--detached"),
                      .program = line.words});
    if (verb == SessionVerb::list)
        return list({.isJson = line.has("--json"), .isWatched = line.has("--watch")});
    if (verb == SessionVerb::attach)
        return attachTo(
            {.session = line.words.empty() ? std::nullopt : std::optional(line.words.front()),
             .isViewOnly = line.has("--view-only")});
    if (verb == SessionVerb::ptyAttach)
        return ptyAttach(arguments.subspan(1));
    if (verb == SessionVerb::service)
        return service(line.words.empty() ? "" : line.words.front());
    if (line.words.empty())
        return complain(std::string(verb) + " needs an id or a name", SessionExit::usage);
    return verb == SessionVerb::end ? end(line.words.front())
                                    : stream(line.words.front(), line.has("--view-only"));
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto line = CommandLine::read(sessionCommandLine, arguments);
    if (!line)
        return complain(line.error().text, SessionExit::usage);
    if (const auto page = CommandLine::ownPage(sessionCommandLine, *line))
        return print(*page);
    return run(*line, arguments);
}
