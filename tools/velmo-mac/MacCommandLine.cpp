#include "tools/velmo-mac/MacCommandLine.h"

#include "core/support/Decimal.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace velmo {

namespace {

using CommandLine::Operands;
using CommandLine::Option;
using CommandLine::Verb;

constexpr std::string_view none = "none";

/// Sets the value that was read from a word. Returns false, and changes nothing, if it is absent.
template<class T>
bool assign(T& target, std::optional<T> value) {
    if (!value)
        return false;
    target = *std::move(value);
    return true;
}

std::optional<bool> onOrOff(std::string_view word) {
    if (word == "on" || word == "true")
        return true;
    return word == "off" || word == "false" ? std::optional(false) : std::nullopt;
}

/// Reads a number from `min` to 1e9; absent for any other word. Uses strtod, since older libraries
/// lack from_chars for reals.
std::optional<double> number(std::string_view word, double min) {
    constexpr double max = 1e9;
    const std::string text(word);
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const bool isOne = !text.empty() && *end == '\0' && value >= min && value <= max;
    return isOne ? std::optional(value) : std::nullopt;
}

bool add(double& target, std::optional<double> amount) {
    target += amount.value_or(0);
    return amount.has_value();
}

bool setBattery(SimulatedMac& mac, std::string_view word) {
    if (word == none) {
        mac.battery.reset();
        return true;
    }
    const auto percent = Decimal::parseUnsigned<int>(word, {.min = 0, .max = 100});
    if (percent)
        mac.battery = percent;
    return percent.has_value();
}

bool setTrustedUsers(SimulatedMac& mac, std::string_view words) {
    std::vector<std::int64_t> users;
    while (!words.empty()) {
        const std::size_t comma = std::min(words.find(','), words.size());
        const auto user = Decimal::parseUnsigned<std::uint32_t>(words.substr(0, comma));
        if (!user)
            return false;
        users.push_back(*user);
        words.remove_prefix(std::min(comma + 1, words.size()));
    }
    mac.trustedUsers = std::move(users);
    return true;
}

bool setUser(SimulatedMac& mac, std::string_view word) {
    const auto user = Decimal::parseUnsigned<std::uint32_t>(word);
    mac.userId = user ? std::int64_t{*user} : mac.userId;
    return user.has_value();
}

bool setSleepDisabled(SimulatedMac& mac, std::string_view word) {
    mac.late.reset();
    return assign(mac.sleepDisabled, onOrOff(word));
}

bool setTeam(SimulatedMac& mac, std::string_view word) {
    mac.team = word == none ? std::nullopt : std::optional(std::string(word));
    return true;
}

bool setLid(SimulatedMac& mac, std::string_view word) {
    const bool isOne = assign(mac.lid, fromRawText<Lid>(word));
    mac.asleep = mac.asleep && mac.lid == Lid::shut;
    mac.displayIsOff = mac.displayIsOff && mac.lid == Lid::shut;
    return isOne;
}

constexpr auto setOptions = std::to_array<Option>({
    {.name = "--mains", .value = "on|off", .help = "on mains power, or on the battery"},
    {.name = "--battery", .value = "0-100|none", .help = "percent, or a Mac without one"},
    {.name = "--thermal",
     .value = "nominal|fair|serious|critical",
     .help = "how hot the machine is"},
    {.name = "--lid",
     .value = "open|shut|none",
     .help = "open, which wakes the Mac, shut, or a Mac without one"},
    {.name = "--sleep-disabled", .value = "on|off", .help = "the system-wide sleep setting"},
    {.name = "--elapse", .value = "SECONDS", .help = "let so much time pass, from 0"},
    {.name = "--clock-forward",
     .value = "SECONDS",
     .help = "set the clock forward, or, below 0, back"},
    {.name = "--user-id", .value = "ID", .help = "the user id that the daemon runs as"},
    {.name = "--team", .value = "TEAM|none", .help = "the team that signed the daemon"},
    {.name = "--trusted-users",
     .value = "ID,ID",
     .help = "user ids whose processes count as signed clients"},
    {.name = "--pmset",
     .value = "none|fails|dies|hangs|lies",
     .help = "what pmset does instead of its job"},
    {.name = "--property-unreadable",
     .value = "on|off",
     .help = "whether the power service keeps the setting to itself"},
    {.name = "--lateness",
     .value = "MILLISECONDS",
     .help = "until the power service follows what pmset has set, from 0"},
    {.name = "--record-folder",
     .value = "none|readOnly|link",
     .help = "what is wrong with the daemon's record folder"},
});

/// The effects of the options, in the same order.
constexpr std::array<bool (*)(SimulatedMac&, std::string_view), setOptions.size()> changes{
    [](SimulatedMac& mac, std::string_view word) { return assign(mac.mains, onOrOff(word)); },
    setBattery,
    [](SimulatedMac& mac, std::string_view word) {
        return assign(mac.thermal, fromRawText<ThermalState>(word));
    },
    setLid,
    setSleepDisabled,
    [](SimulatedMac& mac, std::string_view word) { return add(mac.elapsed, number(word, 0)); },
    [](SimulatedMac& mac, std::string_view word) {
        return add(mac.clockOffset, number(word, -1e9));
    },
    setUser,
    setTeam,
    setTrustedUsers,
    [](SimulatedMac& mac, std::string_view word) {
        return assign(mac.faults.pmset, fromRawText<PmsetFault>(word));
    },
    [](SimulatedMac& mac, std::string_view word) {
        return assign(mac.faults.propertyUnreadable, onOrOff(word));
    },
    [](SimulatedMac& mac, std::string_view word) {
        return assign(mac.faults.lateness, number(word, 0));
    },
    [](SimulatedMac& mac, std::string_view word) {
        return assign(mac.faults.recordFolder, fromRawText<RecordFolderFault>(word));
    },
};

constexpr auto verbs = std::to_array<Verb>({
    {.name = MacVerb::create,
     .help = "make a Mac",
     .operands = Operands::words,
     .operandNames = "[FOLDER]",
     .maxWords = 1},
    {.name = MacVerb::show,
     .help = "print its state as one JSON line",
     .operands = Operands::words,
     .operandNames = "[FOLDER]",
     .maxWords = 1},
    {.name = MacVerb::set,
     .help = "change its state",
     .options = setOptions,
     .operands = Operands::words,
     .operandNames = "[FOLDER]",
     .maxWords = 1},
});

constexpr auto sections = std::to_array<CommandLine::Section>({
    {.heading = "The folder:",
     .text = "  FOLDER is where the Mac lives; VELMO_MAC names it where it is left out."},
});

} // namespace

const CommandLine::Program macCommandLine{
    .name = "velmo-mac",
    .help = "makes a simulated Mac in a folder and changes it from outside",
    .options = {},
    .verbs = verbs,
    .defaultVerb = {},
    .sections = sections,
    .version = VELMO_VERSION,
};

std::optional<std::string> applyChanges(const CommandLine::Line& line, SimulatedMac& mac) {
    for (std::size_t i = 0; i < setOptions.size(); ++i) {
        const auto word = line.value(setOptions[i].name);
        if (word && !changes[i](mac, *word))
            return std::string(setOptions[i].name) + " " + std::string(*word) + ": "
                   + std::string(setOptions[i].value) + " would do";
    }
    return std::nullopt;
}

} // namespace velmo
