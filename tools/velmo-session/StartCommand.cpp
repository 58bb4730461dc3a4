#include "tools/velmo-session/StartCommand.h"

#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/Print.h"
#include "tools/velmo-session/Refusals.h"
#include "tools/velmo-session/SessionExit.h"
#include "tools/velmo-session/SessionStart.h"
#include "tools/velmo-session/TerminalSize.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <expected>
#include <utility>

namespace velmo {

namespace {

int refused(const StartRequest& request, const std::string& folder, const std::string& program,
            const SessionReplyLine& reply) {
    std::string what;
    if (reply.reason == rawText(SessionRefusal::transcript)
        || reply.reason == rawText(SessionRefusal::busy))
        what = request.transcript.value_or("") + ": ";
    else if (reply.reason == rawText(SessionRefusal::folder))
        what = folder + ": ";
    else if (reply.reason == rawText(SessionRefusal::name)
             || reply.reason == rawText(SessionRefusal::misnamed))
        what = request.name.value_or("") + ": ";
    else if (reply.reason != rawText(SessionRefusal::limit))
        what = program + ": ";
    return complain(PtyAttach::sanitizeLabel(what) + refusalText(SessionCall::start, reply),
                    SessionExit::refused);
}

/// Returns the reply, or in words for people why the host has not replied.
std::expected<SessionReplyLine, std::string> askToStart(const SessionCallLine& call) {
    // An idle host may end just before it reads the call, so the call is made twice.
    for (int tries = 0; tries < 2; ++tries) {
        auto host = ControlClient::connectOrStart();
        if (!host)
            return std::unexpected(host.error());
        if (auto reply = host->call(call))
            return *std::move(reply);
    }
    return std::unexpected(std::string(hostUnreachable));
}

/// Tells whether a session can be shown here, and otherwise says what to do.
bool canShow() {
    const bool hasTerminal = ::isatty(STDIN_FILENO) == 1 || ::isatty(STDOUT_FILENO) == 1;
    if (!hasTerminal)
        complain(
            "there is no terminal to show a session in; \"velmo-session start --detached\" and "
            "\"velmo-session stream\" need none",
            SessionExit::refused);
    return hasTerminal;
}

/// Returns the socket of the caller's SSH agent.
std::optional<std::string> agentOfCaller() {
    const char* const given = std::getenv("SSH_AUTH_SOCK"); // NOLINT(concurrency-mt-unsafe)
    std::string agent = given == nullptr ? "" : given;
    const bool isGiven = !agent.empty() && Text::isValidUtf8(agent);
    return isGiven ? std::optional(std::move(agent)) : std::nullopt;
}

int attachById(const AttachRequest& request) {
    const auto reply = ControlClient::ask({.call = SessionCall::ticket,
                                           .session = request.session,
                                           .viewOnly = request.isViewOnly,
                                           .lines = request.lines,
                                           .agent = agentOfCaller()});
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (!reply->ok || !reply->ticket)
        return complain(refusalText(SessionCall::ticket, *reply), SessionExit::refused);
    return attach(*reply->ticket, request.detachChoice);
}

std::optional<std::string> idOfRunning(const std::string& name) {
    const auto reply = ControlClient::ask({.call = SessionCall::list});
    if (!reply || !reply->sessions)
        return std::nullopt;
    for (const SessionEntry& entry : *reply->sessions) {
        if (!entry.exitCode && entry.name == PtyAttach::sanitizeTitle(name))
            return entry.id;
    }
    return std::nullopt;
}

int show(const StartRequest& request, const std::string& id) {
    return request.isDetached ? print(id + "\n")
                              : attachById({.session = id, .detachChoice = request.detachChoice});
}

} // namespace

int start(const StartRequest& request) {
    if (!request.isDetached && !canShow())
        return SessionExit::refused;
    if (request.attachesIfNameRuns) {
        if (const auto id = idOfRunning(request.name.value_or("")))
            return show(request, *id);
    }
    const PtyFrame::Size size = terminalSize();
    const std::vector<std::string> command = SessionStart::commandOf(request.program);
    std::string folder = SessionStart::absolute(request.folder.value_or("."));
    SessionCallLine call{.call = SessionCall::start,
                         .name = request.name,
                         .transcript = request.transcript.transform(SessionStart::absoluteFile),
                         .words = SessionStart::wordsOf(folder, size, command),
                         .environment = SessionStart::environmentToSend()};
    if (!std::ranges::all_of(*call.words, Text::isValidUtf8)
        || !Text::isValidUtf8(call.transcript.value_or("")))
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
        return complain(reply.error(), SessionExit::hostGone);
    if (reply->ok && reply->session)
        return show(request, *reply->session);
    if (request.attachesIfNameRuns && reply->reason == rawText(SessionRefusal::name)) {
        if (const auto id = idOfRunning(request.name.value_or(""))) // another start was quicker
            return show(request, *id);
    }
    return refused(request, folder, command.front(), *reply);
}

int attachTo(const AttachRequest& request) {
    if (!canShow())
        return SessionExit::refused;
    if (request.session)
        return attachById(request);
    const auto reply = ControlClient::ask({.call = SessionCall::list});
    if (!reply || !reply->sessions)
        return complain(hostUnreachable, SessionExit::hostGone);
    std::vector<SessionEntry> running = *reply->sessions;
    std::erase_if(running, [](const SessionEntry& entry) { return entry.exitCode.has_value(); });
    if (running.size() != 1)
        return complain(running.empty() ? "there is no session"
                                        : "there are several sessions; name one of them",
                        SessionExit::refused);
    AttachRequest only = request;
    only.session = running.front().id;
    return attachById(only);
}

} // namespace velmo
