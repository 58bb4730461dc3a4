/// velmo-session: terminal sessions that go on when their window closes.

#include "core/output/Output.h"
#include "core/terminal/PtyAttach.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/ListText.h"
#include "tools/velmo-session/ServeCommand.h"
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

/// Prints the sessions. If no host serves, the list is empty, which is not an error.
int list(bool json) {
    auto host = ControlClient::connect();
    auto reply = host ? host->call({.call = SessionCall::list}) : std::nullopt;
    if (host && !reply)
        return complain("the session host gives no answer", SessionExit::hostGone);
    const auto sessions =
        reply ? reply->sessions.value_or(std::vector<SessionEntry>()) : std::vector<SessionEntry>();
    if (json)
        Output::print(sessions, writeStandardOutput);
    else
        writeStandardOutput(listText(sessions, Clocks::wallTime()));
    return SessionExit::success;
}

int end(const std::string& session) {
    const auto reply = ControlClient::ask({.call = SessionCall::end, .session = session});
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    return reply->ok ? SessionExit::success : complain(refusalText(*reply), SessionExit::refused);
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
    writeStandardOutput(std::string(PtyAttach::probeReply) + "\n");
    return SessionExit::success;
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
        return list(line.has("--json"));
    if (verb == SessionVerb::attach)
        return attachTo(line.words.empty() ? std::nullopt : std::optional(line.words.front()));
    if (verb == SessionVerb::ptyAttach)
        return ptyAttach(arguments.subspan(1));
    if (line.words.empty())
        return complain(std::string(verb) + " needs an id or a name", SessionExit::usage);
    return verb == SessionVerb::end ? end(line.words.front()) : stream(line.words.front());
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto line = CommandLine::read(sessionCommandLine, arguments);
    if (!line)
        return complain(line.error().text, SessionExit::usage);
    if (const auto page = CommandLine::ownPage(sessionCommandLine, *line)) {
        writeStandardOutput(*page);
        return SessionExit::success;
    }
    return run(*line, arguments);
}
