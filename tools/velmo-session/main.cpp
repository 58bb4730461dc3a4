/// velmo-session: terminal sessions that go on when their window closes.

#include "core/output/Output.h"
#include "core/support/Decimal.h"
#include "core/support/Text.h"
#include "core/terminal/PtyAttach.h"
#include "platform/posix/ProcessSetup.h"
#include "sessions/SessionHost.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/KeyNames.h"
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

/// Makes a call that has no result. Returns the exit status.
int ask(const SessionCallLine& call) {
    const auto reply = ControlClient::ask(call);
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    return reply->ok ? SessionExit::success
                     : complain(refusalText(call.call, *reply), SessionExit::refused);
}

/// Types into the session that the first word names.
int send(std::span<const std::string> words) {
    std::string keys = typedBy(words.subspan(1));
    if (!Text::isValidUtf8(keys))
        return complain("only keys in UTF-8 can be handed on", SessionExit::refused);
    if (keys.size() > SessionHost::maxSent)
        return complain("more than " + std::to_string(SessionHost::maxSent)
                            + " bytes can't be sent at once",
                        SessionExit::refused);
    return ask({.call = SessionCall::send, .session = words.front(), .keys = std::move(keys)});
}

/// Prints what the session's screen shows.
int peek(const std::string& session, std::optional<std::uint32_t> lines, bool isJson) {
    const SessionCallLine call{.call = SessionCall::peek, .session = session, .lines = lines};
    const auto reply = ControlClient::ask(call);
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (!reply->ok)
        return complain(refusalText(call.call, *reply), SessionExit::refused);
    const SessionScreen screen = reply->screen.value_or(SessionScreen());
    std::string text;
    if (isJson)
        Output::print(screen, [&text](std::string_view line) { text = line; });
    else
        for (const std::string& line : screen.lines)
            text += line + "\n";
    return print(text);
}

/// Waits for the end of a session. Returns its program's code.
int wait(const std::string& session) {
    auto host = ControlClient::connect();
    const auto reply =
        host ? host->callAndWait({.call = SessionCall::wait, .session = session}) : std::nullopt;
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    return reply->ok ? reply->exitCode.value_or(SessionExit::success)
                     : complain(refusalText(SessionCall::wait, *reply), SessionExit::refused);
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

int startAsAsked(const CommandLine::Line& line, const DetachChoice& detachChoice) {
    auto wanted = optionOf(line, SessionOption::attachOrCreate);
    if (!wanted)
        wanted = optionOf(line, "-A");
    auto name = optionOf(line, "--name");
    if (wanted && name)
        return complain(std::string(SessionOption::attachOrCreate)
                            + " names the session; leave out --name",
                        SessionExit::usage);
    return start({.folder = optionOf(line, "--cwd"),
                  .name = wanted ? wanted : name,
                  .attachesIfNameRuns = wanted.has_value(),
                  .isDetached = line.has("--detached"),
                  .transcript = optionOf(line, SessionOption::transcript),
                  .detachChoice = detachChoice,
                  .program = line.words});
}

int run(const CommandLine::Line& line, std::span<const std::string_view> arguments) {
    const std::string_view verb = line.verb->name;
    if (verb == SessionVerb::serve)
        return serve(line.has("--background") ? ServeMode::background : ServeMode::foreground);
    const auto detachChoice =
        DetachChoice::parse(line.value(SessionOption::detachKey).value_or("C-]"));
    if (!detachChoice)
        return complain(std::string(SessionOption::detachKey)
                            + " takes a key with Control, such as C-a or C-\\",
                        SessionExit::usage);
    if (verb == SessionVerb::start)
        return startAsAsked(line, *detachChoice);
    if (verb == SessionVerb::list)
        return list({.isJson = line.has("--json"), .isWatched = line.has("--watch")});
    const auto lines = line.value(SessionOption::lines).transform([](std::string_view text) {
        return Decimal::parseUnsigned<std::uint32_t>(text);
    });
    if (lines && !*lines)
        return complain(std::string(SessionOption::lines) + " takes a number", SessionExit::usage);
    if (verb == SessionVerb::attach)
        return attachTo(
            {.session = line.words.empty() ? std::nullopt : std::optional(line.words.front()),
             .isViewOnly = line.has(SessionOption::viewOnly),
             .lines = lines.value_or(std::nullopt),
             .detachChoice = *detachChoice});
    if (verb == SessionVerb::ptyAttach)
        return ptyAttach(arguments.subspan(1));
    if (verb == SessionVerb::service)
        return service(line.words.empty() ? "" : line.words.front());
    if (line.words.empty())
        return complain(std::string(verb) + " needs an id or a name", SessionExit::usage);
    const std::string& session = line.words.front();
    if (verb == SessionVerb::send)
        return send(line.words);
    if (verb == SessionVerb::peek)
        return peek(session, lines.value_or(std::nullopt), line.has("--json"));
    if (verb == SessionVerb::wait)
        return wait(session);
    if (verb == SessionVerb::detach)
        return ask({.call = SessionCall::detach, .session = session});
    if (verb == SessionVerb::end)
        return ask({.call = SessionCall::end, .session = session});
    return stream(session, line.has(SessionOption::viewOnly));
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
