#include "tools/velmo-power/PowerCommandLine.h"

#include "core/support/Decimal.h"

#include <array>
#include <utility>

namespace velmo {

namespace {

using CommandLine::Operands;
using CommandLine::Option;
using CommandLine::Section;
using CommandLine::Verb;

constexpr auto everywhere = std::to_array<Option>({
    {.name = "--mac",
     .value = "FOLDER",
     .help = "a simulated Mac, in place of this one (or VELMO_MAC)"},
    {.name = "--quiet", .help = "say only what went wrong"},
});

constexpr auto holdOptions = std::to_array<Option>({
    {.name = "--floor",
     .value = "PERCENT",
     .help = "end below this battery level, 10 to 95 (20 if not given)"},
    {.name = "--for", .value = "TIME", .help = "end after 2h30m, 45m or 90s"},
    {.name = "--until", .value = "HH:MM", .help = "end at this time of the day"},
    {.name = "--pid", .value = "PID", .help = "end when this process ends"},
    {.name = "--ac-only", .help = "end when the Mac is unplugged"},
    {.name = "--until-lid-opens", .help = "end when the lid, once shut, is opened"},
    {.name = "--display-off", .help = "turn the display off when the lid shuts"},
    {.name = "--no-wait", .help = "fail if another client holds, instead of riding on its hold"},
    {.name = "--or-run", .help = "run COMMAND without a hold if there can be none"},
    {.name = "--persist", .help = "take the hold again after somebody has released it"},
    {.name = "--end-on-loss", .help = "end COMMAND when the hold is lost"},
    {.name = "--background", .help = "return once the Mac is held, and print the process id"},
});

constexpr auto statusOptions = std::to_array<Option>({
    {.name = "--json", .help = "as one JSON line"},
    {.name = "--watch", .help = "print it again whenever it changes"},
});

constexpr auto verbs = std::to_array<Verb>({
    {.name = PowerVerb::hold,
     .help = "keep the Mac awake until Ctrl-C, or while COMMAND runs, then release",
     .options = holdOptions,
     .operands = Operands::command,
     .operandNames = "[[--] COMMAND [ARGUMENT...]]"},
    {.name = PowerVerb::release, .help = "end the current hold, whoever holds"},
    {.name = PowerVerb::status,
     .help = "print sleep, power, battery, heat, lid, and who holds",
     .options = statusOptions},
    {.name = PowerVerb::doctor, .help = "say what a hold needs, what is missing, and its cure"},
});

constexpr auto sections = std::to_array<Section>({
    {.heading = "Exit status:",
     .text = "  0 done, and sleep as it was; 1 refused, or sleep may still be disabled, or\n"
             "  standard output can't be written; 2 wrong usage; 3 no daemon answers, for\n"
             "  status too. With COMMAND its own status, and 125 in place of 1, 2 and 3; 126\n"
             "  and 127 if it can't be run; if a signal ends it, velmo-power ends by the same\n"
             "  signal. A signal ends a hold without COMMAND with 0; before there is a hold,\n"
             "  velmo-power ends by the signal."},
    {.heading = "Waiting:",
     .text = "  A wait is told after 2 seconds, and a daemon that does not answer is given up\n"
             "  after 30. While velmo-power waits for the end of its hold, a second signal,\n"
             "  more than a second after the first, ends it at once, with COMMAND's status if\n"
             "  COMMAND has ended."},
});

std::string wrong(std::string_view option, std::string_view value, std::string_view wanted) {
    return std::string(option) + " " + std::string(value) + ": " + std::string(wanted);
}

std::optional<std::int64_t> floorFrom(std::string_view text) {
    if (text.ends_with('%'))
        text.remove_suffix(1);
    return Decimal::parseUnsigned<std::int64_t>(
        text, {.min = BatteryFloor::min, .max = BatteryFloor::max});
}

} // namespace

const CommandLine::Program powerCommandLine{
    .name = "velmo-power",
    .help = "keeps a Mac awake, lid closed too, and tells how it stands with its power",
    .options = everywhere,
    .verbs = verbs,
    .defaultVerb = PowerVerb::status,
    .sections = sections,
    .version = VELMO_VERSION,
};

std::expected<HoldRequest, std::string> HoldRequest::from(const CommandLine::Line& line,
                                                          WallTime now) {
    HoldRequest request;
    if (const auto text = line.value("--floor")) {
        const auto percent = floorFrom(*text);
        if (!percent)
            return std::unexpected(wrong("--floor", *text,
                                         std::to_string(BatteryFloor::min) + " to "
                                             + std::to_string(BatteryFloor::max) + " would do"));
        request.floor = *percent;
    }
    if (const auto text = line.value("--for")) {
        request.limits.seconds = parseDuration(*text);
        if (!request.limits.seconds)
            return std::unexpected(wrong("--for", *text, "2h30m, 45m or 90s would do"));
    }
    if (const auto text = line.value("--until")) {
        const auto minutes = parseTimeOfDay(*text);
        if (!minutes)
            return std::unexpected(wrong("--until", *text, "a time from 0:00 to 23:59 would do"));
        request.limits.until = nextTimeOfDay(*minutes, now);
    }
    if (const auto text = line.value("--pid")) {
        request.limits.process = Decimal::parsePositive(*text, INT32_MAX);
        if (!request.limits.process)
            return std::unexpected(wrong("--pid", *text, "a process id would do"));
    }
    request.limits.onlyOnMains = line.has("--ac-only");
    request.limits.untilLidOpens = line.has("--until-lid-opens");
    request.displayOff = line.has("--display-off");
    request.rides = !line.has("--no-wait");
    request.runsAnyway = line.has("--or-run");
    request.persists = line.has("--persist");
    request.endsCommandOnLoss = line.has("--end-on-loss");
    request.inBackground = line.has("--background");
    request.isQuiet = line.has("--quiet");
    request.command = line.words;
    for (const auto& [option, needs] : {std::pair("--or-run", request.runsAnyway),
                                        std::pair("--end-on-loss", request.endsCommandOnLoss)}) {
        if (needs && request.command.empty())
            return std::unexpected(std::string(option) + " needs a COMMAND");
    }
    return request;
}

} // namespace velmo
