#pragma once

#include "core/support/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines on the control socket of the session host. A client sends each call as one line of
/// JSON and gets one line back. `SESSION` is an id or a name.
///
///     {"call":"start","environment":["HOME=..."],"name":"...","words":["--cwd",...,"--",...]}
///     {"call":"list"}
///     {"call":"ticket","session":SESSION,"viewOnly":true}
///     {"call":"stream","session":SESSION}    from the reply on, PtyFrame.h both ways
///     {"call":"send","keys":"ls\\r","session":SESSION}
///     {"call":"peek","session":SESSION}
///     {"call":"wait","session":SESSION}      the reply comes when the session has ended
///     {"call":"detach","session":SESSION}
///     {"call":"end","session":SESSION}
namespace velmo {

enum class SessionCall { start, list, ticket, stream, send, peek, wait, detach, end };

template<>
inline constexpr auto rawTexts<SessionCall> = std::to_array<std::string_view>(
    {"start", "list", "ticket", "stream", "send", "peek", "wait", "detach", "end"});

/// Why a call is refused. A file that does not exist and one that is not allowed have the same
/// reason: the client is told what was refused, never which files exist.
enum class SessionRefusal {
    call,       ///< the line is not a call
    words,      ///< the program may not have these arguments, or the size is not valid
    folder,     ///< no session may work in the folder
    program,    ///< the program is not one that a session may run
    name,       ///< a running session has this name
    misnamed,   ///< no session may have this name
    limit,      ///< the number of sessions, viewers, tickets or sent keys is at its limit
    system,     ///< the system could not start the program or write the ticket
    unknown,    ///< there is no such session
    ended,      ///< the session has ended
    itself,     ///< the session would be shown in itself, straight or through others, without end
    transcript, ///< the transcript can't be written to the file
    busy,       ///< another session writes its transcript to the file
};

template<>
inline constexpr auto rawTexts<SessionRefusal> = std::to_array<std::string_view>(
    {"call", "words", "folder", "program", "name", "misnamed", "limit", "system", "unknown",
     "ended", "itself", "transcript", "busy"});

/// The longest line of either side in bytes, line feed included. A call fits with 64 arguments of
/// the greatest length.
inline constexpr std::size_t maxSessionLine = std::size_t{1} << 20;

struct SessionCallLine {
    SessionCall call = SessionCall::list;
    std::optional<std::string> session; ///< of all but start and list
    std::optional<bool> viewOnly;       ///< of ticket and stream: may not type
    std::optional<std::int64_t> lines; ///< of ticket and stream: the replay is no longer than these
                                       ///<   and of peek: only the last of the screen
    std::optional<std::string> agent;  ///< of ticket and stream: the viewer's SSH_AUTH_SOCK
    std::optional<std::string> keys;   ///< of send
    std::optional<std::string> name;   ///< of start
    std::optional<std::string> transcript;               ///< of start: the absolute path of a file
    std::optional<std::vector<std::string>> words;       ///< of start: what `Pty::parseSpawn` reads
    std::optional<std::vector<std::string>> environment; ///< of start: the caller's, "KEY=VALUE"

    static constexpr auto fields = std::tuple{field("call", &SessionCallLine::call),
                                              field("session", &SessionCallLine::session),
                                              field("viewOnly", &SessionCallLine::viewOnly),
                                              field("lines", &SessionCallLine::lines),
                                              field("agent", &SessionCallLine::agent),
                                              field("keys", &SessionCallLine::keys),
                                              field("name", &SessionCallLine::name),
                                              field("transcript", &SessionCallLine::transcript),
                                              field("words", &SessionCallLine::words),
                                              field("environment", &SessionCallLine::environment)};
    bool operator==(const SessionCallLine&) const = default;
};

/// What `list` tells of a session.
struct SessionEntry {
    std::string id;
    std::string name;
    std::string program;
    std::string folder;
    int cols = 0;
    int rows = 0;
    double since = 0; ///< seconds since 1970, like the other times
    int viewers = 0;
    std::optional<double> attachedSince;  ///< absent without viewers
    std::optional<double> detachedSince;  ///< absent with viewers
    std::uint64_t bytesOut = 0;           ///< that the program wrote
    double idleSince = 0;                 ///< when the program wrote last, or started
    std::optional<double> attentionSince; ///< of the last bell or notice that no viewer has seen
    std::optional<std::string> notice;    ///< the last notice's text; absent after bells alone
    std::optional<int> exitCode;          ///< absent until the session has ended

    static constexpr auto fields = std::tuple{
        field("id", &SessionEntry::id),
        field("name", &SessionEntry::name),
        field("program", &SessionEntry::program),
        field("folder", &SessionEntry::folder),
        field("cols", &SessionEntry::cols),
        field("rows", &SessionEntry::rows),
        field("since", &SessionEntry::since),
        field("viewers", &SessionEntry::viewers),
        field("attachedSince", &SessionEntry::attachedSince),
        field("detachedSince", &SessionEntry::detachedSince),
        field("bytesOut", &SessionEntry::bytesOut),
        field("idleSince", &SessionEntry::idleSince),
        field("attentionSince", &SessionEntry::attentionSince),
        field("notice", &SessionEntry::notice),
        field("exitCode", &SessionEntry::exitCode),
    };
    bool operator==(const SessionEntry&) const = default;
};

/// What `peek` tells of a session's screen.
struct SessionScreen {
    int cols = 0;
    int rows = 0;
    int cursorColumn = 0;           ///< from 1
    int cursorRow = 0;              ///< from 1
    bool alternate = false;         ///< the program shows its alternate screen, as editors do
    std::vector<std::string> lines; ///< without blanks at their ends, up to the last with text

    static constexpr auto fields = std::tuple{
        field("cols", &SessionScreen::cols),
        field("rows", &SessionScreen::rows),
        field("cursorColumn", &SessionScreen::cursorColumn),
        field("cursorRow", &SessionScreen::cursorRow),
        field("alternate", &SessionScreen::alternate),
        field("lines", &SessionScreen::lines),
    };
    bool operator==(const SessionScreen&) const = default;
};

struct SessionReplyLine {
    bool ok = false;
    std::optional<std::string> reason;                 ///< a `SessionRefusal`
    std::optional<std::string> session;                ///< of start: the id
    std::optional<std::string> ticket;                 ///< of ticket: the path of the file
    std::optional<std::vector<SessionEntry>> sessions; ///< of list
    std::optional<SessionScreen> screen;               ///< of peek
    std::optional<int> exitCode;                       ///< of wait

    static constexpr auto fields = std::tuple{field("ok", &SessionReplyLine::ok),
                                              field("reason", &SessionReplyLine::reason),
                                              field("session", &SessionReplyLine::session),
                                              field("ticket", &SessionReplyLine::ticket),
                                              field("sessions", &SessionReplyLine::sessions),
                                              field("screen", &SessionReplyLine::screen),
                                              field("exitCode", &SessionReplyLine::exitCode)};
    bool operator==(const SessionReplyLine&) const = default;
};

} // namespace velmo
