#include "tools/velmo-session/SessionCommandLine.h"

#include "tools/velmo-session/Refusals.h"

#include <array>
#include <string>

namespace velmo {

namespace {

using CommandLine::Operands;
using CommandLine::Option;
using CommandLine::Section;
using CommandLine::Verb;

constexpr std::string_view detachKeyHelp =
    "detach with this key and d, not Control-]; for example C-a";

constexpr auto startOptions = std::to_array<Option>({
    {.name = "--cwd",
     .value = "FOLDER",
     .help = "work there; else here, or at home where that is not allowed"},
    {.name = "--name", .value = "NAME", .help = "call the session so"},
    {.name = SessionOption::attachOrCreate,
     .value = "NAME",
     .help = "attach to the session of this name, or start it if it does not run"},
    {.name = "-A", .value = "NAME", .help = "the same"},
    {.name = SessionOption::detachKey, .value = "KEY", .help = detachKeyHelp},
    {.name = "--detached", .help = "print its id instead of attaching"},
    {.name = SessionOption::transcript,
     .value = "FILE",
     .help = "write what the session shows to FILE, and before that to FILE.1"},
});

constexpr auto streamOptions = std::to_array<Option>({
    {.name = SessionOption::viewOnly, .help = "look, and type nothing"},
});

constexpr auto viewOptions = std::to_array<Option>({
    {.name = SessionOption::viewOnly, .help = "look, and type nothing"},
    {.name = SessionOption::lines, .value = "N", .help = "show only the last N lines of what was"},
    {.name = SessionOption::detachKey, .value = "KEY", .help = detachKeyHelp},
});

constexpr auto listOptions = std::to_array<Option>({
    {.name = "--json", .help = "as one JSON line"},
    {.name = "--watch", .help = "again whenever something changes, until Ctrl-C"},
});

constexpr auto peekOptions = std::to_array<Option>({
    {.name = SessionOption::lines, .value = "N", .help = "only the last N lines"},
    {.name = "--json", .help = "with the size and the cursor, as one JSON line"},
});

constexpr auto serveOptions = std::to_array<Option>({
    {.name = "--background", .help = "log to a file, and end when nobody needs the host"},
});

constexpr auto attachOptions = std::to_array<Option>({
    {.name = "--ticket-file", .value = "FILE", .help = "the ticket"},
    {.name = "--probe", .help = "print what this client speaks"},
});

constexpr auto verbs = std::to_array<Verb>({
    {.name = SessionVerb::start,
     .help = "start a session, your log-in shell without PROGRAM, and attach to it",
     .options = startOptions,
     .operands = Operands::command,
     .operandNames = "[[--] PROGRAM [ARGUMENT...]]"},
    {.name = SessionVerb::attach,
     .help = "continue a session in this terminal; Control-] and then d detaches",
     .options = viewOptions,
     .operands = Operands::words,
     .operandNames = "[ID|NAME]",
     .maxWords = 1},
    {.name = SessionVerb::list, .help = "print the sessions", .options = listOptions},
    {.name = SessionVerb::send,
     .help = "type into a session: texts, and keys such as Enter, C-c or Up",
     .operands = Operands::command,
     .operandNames = "ID|NAME KEY... [-- TEXT...]"},
    {.name = SessionVerb::peek,
     .help = "print what a session's screen shows, as text",
     .options = peekOptions,
     .operands = Operands::words,
     .operandNames = "ID|NAME",
     .maxWords = 1},
    {.name = SessionVerb::wait,
     .help = "wait until a session ends, and exit with its program's code",
     .operands = Operands::words,
     .operandNames = "ID|NAME",
     .maxWords = 1},
    {.name = SessionVerb::detach,
     .help = "detach the viewers of a session, which goes on",
     .operands = Operands::words,
     .operandNames = "ID|NAME",
     .maxWords = 1},
    {.name = SessionVerb::end,
     .help = "hang up, then terminate, then kill what runs in a session",
     .operands = Operands::words,
     .operandNames = "ID|NAME",
     .maxWords = 1},
    {.name = SessionVerb::stream,
     .help = "continue a session over standard input and output, in frames",
     .options = streamOptions,
     .operands = Operands::words,
     .operandNames = "ID|NAME",
     .maxWords = 1},
    {.name = SessionVerb::serve,
     .help = "run the session host, in the foreground",
     .options = serveOptions},
    {.name = SessionVerb::service,
     .help = "let the system start and keep the session host",
     .operands = Operands::words,
     .operandNames = "install|remove|status",
     .maxWords = 1},
    {.name = SessionVerb::ptyAttach,
     .help = "join a session by a ticket, as a terminal window does",
     .options = attachOptions},
});

const std::string programs = "  A session runs one of these, where the system or Homebrew has "
                             "installed it:\n  "
                             + permittedPrograms()
                             + ".\n"
                               "  Any other program is started from a shell in a session.";

const std::array sections{
    Section{.heading = "Programs:", .text = programs},
    Section{.heading = "Exit status:",
            .text = "  0 done, or detached; the program's own code when it ends while attached;\n"
                    "  122 wrong usage; 123 refused; 124 the host is gone or can't be reached;\n"
                    "  125 standard output can't be written;\n"
                    "  128+N after signal N."},
    Section{.heading = "Files:",
            .text =
                "  ~/.velmo/velmo-term on Linux, velmo-term in the user's temporary folder on a\n"
                "  Mac: the host's sockets, its lock, and host.log."},
    Section{
        .heading = "Environment:",
        .text =
            "  HOME finds that folder on Linux, SHELL is the shell of a start without PROGRAM,\n"
            "  and PATH finds PROGRAM. A session gets HOME, USER, LOGNAME, SHELL, PATH, LANG,\n"
            "  SSH_AUTH_SOCK, TMPDIR and LC_*, and no other variable."},
    Section{.heading = "Examples:",
            .text = "  velmo-session start -A work          attach to work, or start it\n"
                    "  velmo-session attach --view-only work\n"
                    "  velmo-session send work make Enter && velmo-session wait work\n"
                    "  velmo-session peek --lines 5 work\n"
                    "  velmo-session list --watch"},
};

} // namespace

const CommandLine::Program sessionCommandLine{
    .name = "velmo-session",
    .help = "runs terminal sessions that go on when their window closes",
    .verbs = verbs,
    .sections = sections,
    .version = VELMO_VERSION,
};

} // namespace velmo
