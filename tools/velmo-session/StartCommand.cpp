#include "tools/velmo-session/StartCommand.h"

#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/SessionExit.h"
#include "tools/velmo-session/SessionStart.h"
#include "tools/velmo-session/TerminalSize.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

int refused(const StartRequest& request, const std::string& folder, const std::string& program,
            const SessionReplyLine& reply) {
    std::string what;
    if (reply.reason == rawText(SessionRefusal::folder))
        what = folder + ": ";
    else if (reply.reason == rawText(SessionRefusal::name)
             || reply.reason == rawText(SessionRefusal::misnamed))
        what = request.name.value_or("") + ": ";
    else if (reply.reason != rawText(SessionRefusal::limit))
        what = program + ": ";
    return complain(PtyAttach::sanitizeLabel(what + refusalText(reply)), SessionExit::refused);
}

std::optional<SessionReplyLine> askToStart(const SessionCallLine& call) {
    // An idle host may end just before it reads the call, so the call is made twice.
    for (int tries = 0; tries < 2; ++tries) {
        auto host = ControlClient::connectOrStart();
        auto reply = host ? host->call(call) : std::nullopt;
        if (reply)
            return reply;
    }
    return std::nullopt;
}

int attachById(const std::string& session) {
    const auto reply = ControlClient::ask({.call = SessionCall::ticket, .session = session});
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (reply->reason == rawText(SessionRefusal::ended))
        return complain(PtyAttach::english().ended, SessionExit::refused);
    if (!reply->ok || !reply->ticket)
        return complain(refusalText(*reply), SessionExit::refused);
    return attach(*reply->ticket);
}

} // namespace

int start(const StartRequest& request) {
    const PtyFrame::Size size = terminalSize();
    const std::vector<std::string> command = SessionStart::commandOf(request.program);
    std::string folder = SessionStart::absolute(request.folder.value_or("."));
    SessionCallLine call{.call = SessionCall::start,
                         .name = request.name,
                         .words = SessionStart::wordsOf(folder, size, command),
                         .environment = SessionStart::environmentToSend()};
    if (!std::ranges::all_of(*call.words, Text::isValidUtf8))
        return complain("only words in UTF-8 can be handed on", SessionExit::refused);
    auto reply = askToStart(call);
    if (reply && reply->reason == rawText(SessionRefusal::folder) && !request.folder) {
        const std::string refusedFolder = std::exchange(folder, SessionStart::home());
        call.words = SessionStart::wordsOf(folder, size, command);
        reply = askToStart(call);
        if (reply && reply->ok)
            complain("no session may work in " + PtyAttach::sanitizeLabel(refusedFolder)
                         + "; it works in " + folder,
                     SessionExit::success);
    }
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (!reply->ok || !reply->session)
        return refused(request, folder, command.front(), *reply);
    if (!request.isDetached)
        return attachById(*reply->session);
    writeStandardOutput(*reply->session + "\n");
    return SessionExit::success;
}

int attachTo(const std::optional<std::string>& session) {
    if (session)
        return attachById(*session);
    const auto reply = ControlClient::ask({.call = SessionCall::list});
    if (!reply || !reply->sessions)
        return complain(hostUnreachable, SessionExit::hostGone);
    std::vector<SessionEntry> running = *reply->sessions;
    std::erase_if(running, [](const SessionEntry& entry) { return entry.exitCode.has_value(); });
    if (running.size() != 1)
        return complain(running.empty() ? "there is no session"
                                        : "there are several sessions; name one of them",
                        SessionExit::refused);
    return attachById(running.front().id);
}

} // namespace velmo
