#include "tools/velmo-phone/PhoneCommandLine.h"

#include <array>

namespace velmo {

namespace {

using CommandLine::Operands;
using CommandLine::Option;
using CommandLine::Section;
using CommandLine::Verb;

constexpr auto serveOptions = std::to_array<Option>({
    {.name = "--port",
     .value = "PORT",
     .help = "listen there on this computer; else where it listened before, or at a free one"},
    {.name = "--url",
     .value = "URL",
     .help = "the address from outside, as in https://NAME; remembered"},
    {.name = "--no-url", .help = "forget the address from outside"},
    {.name = "--mac",
     .value = "FOLDER",
     .help = "a simulated Mac, in place of this one (or VELMO_MAC)"},
});

constexpr auto admitOptions = std::to_array<Option>({
    {.name = "--view-only", .help = "the device may see, but neither type, start nor end"},
});

constexpr auto devicesOptions = std::to_array<Option>({
    {.name = "--json", .help = "as one JSON line"},
});

constexpr auto revokeOptions = std::to_array<Option>({
    {.name = "--all", .help = "every device"},
});

constexpr auto verbs = std::to_array<Verb>({
    {.name = PhoneVerb::serve,
     .help = "serve the page on this computer, and let one device in",
     .options = serveOptions},
    {.name = PhoneVerb::admit,
     .help = "let one more device in: print an address that is good for two minutes",
     .options = admitOptions},
    {.name = PhoneVerb::devices, .help = "print the devices", .options = devicesOptions},
    {.name = PhoneVerb::revoke,
     .help = "let a device in no more, and close its pages",
     .options = revokeOptions,
     .operands = Operands::words,
     .operandNames = "[NAME]",
     .maxWords = 1},
});

constexpr auto sections = std::to_array<Section>({
    {.heading = "Exit status:",
     .text = "  0 done; 122 wrong usage; 123 refused; 124 no velmo-phone serves;\n"
             "  125 standard output can't be written."},
});

} // namespace

const CommandLine::Program phoneCommandLine{
    .name = "velmo-phone",
    .help = "continues terminal sessions in a phone's browser",
    .verbs = verbs,
    .defaultVerb = PhoneVerb::serve,
    .sections = sections,
    .version = VELMO_VERSION,
};

} // namespace velmo
