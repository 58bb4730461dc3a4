#include "tools/velmo-session/Refusals.h"

#include "core/terminal/AttachLabels.h"
#include "core/terminal/Pty.h"
#include "sessions/SessionHost.h"

#include <string_view>

namespace velmo {

namespace {

std::string limitText(SessionCall call) {
    if (call == SessionCall::start)
        return std::to_string(SessionHost::maxSessions)
               + " sessions run already, the most there may be";
    if (call == SessionCall::stream)
        return std::to_string(TerminalSession::maxViewers)
               + " viewers watch the session already, the most there may be";
    if (call == SessionCall::send)
        return "the program has not read what was sent before";
    return std::to_string(SessionHost::maxTickets)
           + " tickets wait for their viewers, the most there may be";
}

} // namespace

std::string refusalText(SessionCall call, const SessionReplyLine& reply) {
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
        return "this program may not run in a session; these may, where the system or Homebrew has "
               "installed them: "
               + permittedPrograms();
    case SessionRefusal::name:
        return "a session of this name runs already";
    case SessionRefusal::misnamed:
        return "no session can have this name";
    case SessionRefusal::limit:
        return limitText(call);
    case SessionRefusal::system:
        return call == SessionCall::start ? "the system could not start it"
                                          : "the host could not write a ticket: is the disk full?";
    case SessionRefusal::itself:
        return "a session can't be shown in itself";
    case SessionRefusal::transcript:
        return "a transcript is written to a plain file of yours, no link, of at most "
               + std::to_string(Transcript::maxFile >> 20)
               + " MiB, in a folder that exists and that you may write to";
    case SessionRefusal::busy:
        return "another session writes its transcript there";
    case SessionRefusal::unknown:
        return "there is no such session";
    case SessionRefusal::ended:
        break;
    }
    return PtyAttach::english().ended;
}

std::string permittedPrograms() {
    std::string names;
    const auto add = [&names](std::string_view name) {
        names.append(names.empty() ? "" : ", ").append(name);
    };
    for (const auto& shell : Pty::shells)
        add(shell);
    for (const auto& tool : Pty::tools)
        add(tool);
    return names;
}

} // namespace velmo
