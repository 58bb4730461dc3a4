#pragma once

#include "core/support/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines on the control socket of the session host. A client sends one line of JSON a call and
/// gets one line back. `SESSION` is an id or a name.
///
///     {"call":"start","environment":["HOME=..."],"name":"...","words":["--cwd",...,"--",...]}
///     {"call":"list"}
///     {"call":"ticket","session":SESSION}
///     {"call":"stream","session":SESSION}    from the reply on, PtyFrame.h both ways
///     {"call":"end","session":SESSION}
namespace velmo {

enum class SessionCall { start, list, ticket, stream, end };

template<>
inline constexpr auto rawTexts<SessionCall> =
    std::to_array<std::string_view>({"start", "list", "ticket", "stream", "end"});

/// Why a call is refused. What does not exist and what is not allowed have the same reason: the
/// caller is told what was refused, never which files there are.
enum class SessionRefusal {
    call,     ///< the line is not a call
    words,    ///< the program may not have these arguments, or the size is not one
    folder,   ///< no session may work in the folder
    program,  ///< the program is not one that a session may run
    name,     ///< a running session has this name
    misnamed, ///< no session may have this name
    limit,    ///< there are as many sessions, viewers or tickets as there may be
    system,   ///< the system could not start the program or write the ticket
    unknown,  ///< there is no such session
    ended,    ///< the session has ended
    itself,   ///< the session would be shown in itself, without end
};

template<>
inline constexpr auto rawTexts<SessionRefusal> =
    std::to_array<std::string_view>({"call", "words", "folder", "program", "name", "misnamed",
                                     "limit", "system", "unknown", "ended", "itself"});

/// Bytes of a line of either side, line feed included: 64 arguments at their longest fit.
inline constexpr std::size_t maxSessionLine = std::size_t{1} << 20;

struct SessionCallLine {
    SessionCall call = SessionCall::list;
    std::optional<std::string> session;                  ///< of ticket, stream and end
    std::optional<std::string> name;                     ///< of start
    std::optional<std::vector<std::string>> words;       ///< of start: what `Pty::parseSpawn` reads
    std::optional<std::vector<std::string>> environment; ///< of start: the caller's, "KEY=VALUE"

    static constexpr auto fields = std::tuple{
        field("call", &SessionCallLine::call), field("session", &SessionCallLine::session),
        field("name", &SessionCallLine::name), field("words", &SessionCallLine::words),
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
    std::optional<double> attachedSince; ///< there are viewers
    std::optional<double> detachedSince; ///< there are none
    std::uint64_t bytesOut = 0;          ///< that the program wrote
    std::optional<int> exitCode;         ///< the program has ended

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
        field("exitCode", &SessionEntry::exitCode),
    };
    bool operator==(const SessionEntry&) const = default;
};

struct SessionReplyLine {
    bool ok = false;
    std::optional<std::string> reason;                 ///< a `SessionRefusal`
    std::optional<std::string> session;                ///< of start: the id
    std::optional<std::string> ticket;                 ///< of ticket: the path of the file
    std::optional<std::vector<SessionEntry>> sessions; ///< of list

    static constexpr auto fields = std::tuple{
        field("ok", &SessionReplyLine::ok), field("reason", &SessionReplyLine::reason),
        field("session", &SessionReplyLine::session), field("ticket", &SessionReplyLine::ticket),
        field("sessions", &SessionReplyLine::sessions)};
    bool operator==(const SessionReplyLine&) const = default;
};

} // namespace velmo
