#include "tools/simulated-daemon/DaemonCommandLine.h"

#include <array>

namespace velmo {

namespace {

constexpr auto verbs = std::to_array<CommandLine::Verb>({
    {.name = {},
     .help = {},
     .operands = CommandLine::Operands::words,
     .operandNames = "[FOLDER]",
     .maxWords = 1},
});

constexpr auto sections = std::to_array<CommandLine::Section>({
    {.heading = "The folder:",
     .text = "  FOLDER is where the Mac lives; VELMO_MAC names it where it is left out.\n"
             "  velmo-mac create FOLDER makes one."},
    {.heading = "Exit status:",
     .text = "  0 idle for a minute, or told to end; 1 a daemon runs there already, or the\n"
             "  folder can't be used; 2 wrong usage, or no Mac in the folder."},
});

} // namespace

const CommandLine::Program daemonCommandLine{
    .name = "VelmoPowerDaemonSimulated",
    .help = "is the power daemon of a simulated Mac",
    .verbs = verbs,
    .sections = sections,
    .version = VELMO_VERSION,
};

} // namespace velmo
