/// velmo-session: terminal sessions that go on when their window closes.

#include "core/output/Output.h"
#include "core/terminal/PtyAttach.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/ExitStatus.h"
#include "tools/velmo-session/ListText.h"
#include "tools/velmo-session/ServeCommand.h"
#include "tools/velmo-session/SessionCommandLine.h"
#include "tools/velmo-session/StartCommand.h"
#include "tools/velmo-session/StreamCommand.h"

#include <optional>
#include <string>
#include <vector>

namespace {

using namespace velmo;

std::optional<std::string> optionOf(const SessionLine& line, std::string_view name) {
    const auto found = line.options.find(name);
    return found == line.options.end() ? std::nullopt : std::optional(found->second);
}

/// No host, no sessions: that is an answer too.
int list(bool json) {
    auto host = ControlClient::connect();
    auto reply = host ? host->call({.call = SessionCall::list}) : std::nullopt;
    if (host && !reply)
        return complain("the session host went away without an answer", ExitStatus::hostGone);
    const auto sessions =
        reply ? reply->sessions.value_or(std::vector<SessionEntry>()) : std::vector<SessionEntry>();
    if (json)
        Output::print(sessions, writeStandardOutput);
    else
        writeStandardOutput(listText(sessions, Clocks::wallTime()));
    return ExitStatus::success;
}

int end(const std::string& session) {
    auto host = ControlClient::connect();
    const auto reply =
        host ? host->call({.call = SessionCall::end, .session = session}) : std::nullopt;
    if (!reply)
        return complain("the session host can't be reached", ExitStatus::hostGone);
    return reply->ok ? ExitStatus::success : complain(refusalText(*reply), ExitStatus::refused);
}

int ptyAttach(const std::vector<std::string>& arguments) {
    const auto parsed = PtyAttach::parseArguments(arguments);
    if (!parsed)
        return complain("pty-attach takes --ticket-file and an absolute path, or --probe",
                        ExitStatus::usage);
    if (const auto* const ticket = std::get_if<PtyAttach::TicketArguments>(&*parsed))
        return attach(ticket->path);
    writeStandardOutput(std::string(PtyAttach::probeReply) + "\n");
    return ExitStatus::success;
}

int run(const SessionLine& line) {
    if (line.verb == "serve")
        return serve(line.has("--background") ? ServeMode::background : ServeMode::foreground);
    if (line.verb == "start")
        return start({.folder = optionOf(line, "--cwd"),
                      .name = optionOf(line, "--name"),
                      .isDetached = line.has("--detached"),
                      .program = line.words});
    if (line.verb == "list")
        return list(line.has("--json"));
    if (line.verb == "attach")
        return attachTo(line.words.empty() ? std::nullopt : std::optional(line.words.front()));
    if (line.words.empty())
        return complain(std::string(line.verb) + " needs an id or a name", ExitStatus::usage);
    return line.verb == "end" ? end(line.words.front()) : stream(line.words.front());
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && (arguments.front() == "--help" || arguments.front() == "-h")) {
        writeStandardOutput(sessionHelp());
        return ExitStatus::success;
    }
    // Its arguments are those of the attach client, whatever program that is a part of.
    if (!arguments.empty() && arguments.front() == PtyAttach::mode)
        return ptyAttach({arguments.begin() + 1, arguments.end()});
    const auto line = readSessionLine(arguments);
    return line ? run(*line) : complain(line.error(), ExitStatus::usage);
}
