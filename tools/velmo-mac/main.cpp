/// velmo-mac: makes a simulated Mac and does to it what happens to Macs: the plug is pulled, the
/// battery runs down, the lid cooks, a tool breaks, hours pass.

#include "core/output/Output.h"
#include "core/support/Decimal.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/StandardStreams.h"
#include "platform/simulated/MacFolder.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace velmo;

/// What one call of `velmo-mac set` changes; what is absent stays as it is.
struct Changes {
    std::optional<bool> mains;
    std::optional<std::string> battery;
    std::optional<std::string> thermal;
    std::optional<std::string> lid;
    std::optional<bool> sleepDisabled;
    std::optional<double> elapse;
    std::optional<double> clockForward;
    std::optional<std::int64_t> userId;
    std::optional<std::string> team;
    std::optional<std::vector<std::int64_t>> trustedUsers;
    std::optional<std::string> pmset;
    std::optional<bool> propertyUnreadable;
    std::optional<double> lateness;
    std::optional<std::string> recordFolder;
};

constexpr const char* none = "none";
constexpr int usageError = 2;

/// Refuses any other word, and says what would do.
CLI::Validator only(const std::string& what, std::function<bool(const std::string&)> suits) {
    return {[what, suits = std::move(suits)](const std::string& word) {
                return suits(word) ? "" : "\"" + word + "\" is not " + what;
            },
            ""};
}

bool isNumber(const std::string& word, double min, double max) {
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    return !word.empty() && *end == '\0' && number >= min && number <= max;
}

CLI::Validator onOrOff() {
    return only("on or off", [](const std::string& word) {
        return word == "on" || word == "off" || word == "true" || word == "false";
    });
}

CLI::Validator seconds(double min) {
    return only("a number of at most 1000000000, and at least " + std::to_string(std::lround(min)),
                [min](const std::string& word) { return isNumber(word, min, 1e9); });
}

CLI::Validator userId() {
    return only("a user id", [](const std::string& word) {
        return Decimal::parseUnsigned<std::uint32_t>(word).has_value();
    });
}

template<HasRawText E>
CLI::Option* addChoice(CLI::App& app, const std::string& name, std::optional<std::string>& target,
                       const std::string& description) {
    std::string choices;
    for (const std::string_view text : rawTexts<E>)
        choices.append(choices.empty() ? "one of " : ", ").append(text);
    return app.add_option(name, target, description)
        ->check(only(choices,
                     [](const std::string& word) { return fromRawText<E>(word).has_value(); }));
}

void addChangeOptions(CLI::App& app, Changes& changes) {
    const auto percentOrNone = only("0 to 100, or none", [](const std::string& word) {
        return word == none || Decimal::parseUnsigned<int>(word, {.min = 0, .max = 100});
    });
    app.add_option("--mains", changes.mains, "on mains power (on) or on the battery (off)")
        ->check(onOrOff());
    app.add_option("--battery", changes.battery, "percent, or none")->check(percentOrNone);
    addChoice<ThermalState>(app, "--thermal", changes.thermal, "how hot the machine is");
    addChoice<Lid>(app, "--lid", changes.lid,
                   "open, which wakes the Mac, shut, or a Mac without one");
    app.add_option("--sleep-disabled", changes.sleepDisabled, "the system-wide sleep setting")
        ->check(onOrOff());
    app.add_option("--elapse", changes.elapse, "seconds that pass")->check(seconds(0));
    app.add_option("--clock-forward", changes.clockForward,
                   "seconds by which the clock is set forward, or, below 0, back")
        ->check(seconds(-1e9));
    app.add_option("--user-id", changes.userId, "the user that the daemon runs as")
        ->check(userId());
    app.add_option("--team", changes.team, "the team that signed the daemon, or none");
    app.add_option("--trusted-users", changes.trustedUsers,
                   "user ids whose processes count as signed clients")
        ->check(userId());
    addChoice<PmsetFault>(app, "--pmset", changes.pmset, "what pmset does instead of its job");
    app.add_option("--property-unreadable", changes.propertyUnreadable,
                   "whether the power service keeps the sleep setting to itself")
        ->check(onOrOff());
    app.add_option("--lateness", changes.lateness,
                   "milliseconds until the power service follows what pmset has set")
        ->check(seconds(0));
    addChoice<RecordFolderFault>(app, "--record-folder", changes.recordFolder,
                                 "what is wrong with the folder of the daemon's record");
}

template<HasRawText E>
void choose(E& target, const std::optional<std::string>& text) {
    if (text)
        target = fromRawText<E>(*text).value_or(target);
}

void apply(const Changes& changes, SimulatedMac& mac) {
    mac.mains = changes.mains.value_or(mac.mains);
    if (changes.battery)
        mac.battery =
            changes.battery == none ? std::nullopt : std::optional(stoi(*changes.battery));
    choose(mac.thermal, changes.thermal);
    choose(mac.lid, changes.lid);
    mac.asleep = mac.asleep && mac.lid == Lid::shut;
    mac.displayIsOff = mac.displayIsOff && mac.lid == Lid::shut;
    if (changes.sleepDisabled) {
        mac.sleepDisabled = *changes.sleepDisabled;
        mac.late.reset();
    }
    mac.elapsed += changes.elapse.value_or(0);
    mac.clockOffset += changes.clockForward.value_or(0);
    mac.userId = changes.userId.value_or(mac.userId);
    if (changes.team)
        mac.team = changes.team == none ? std::nullopt : changes.team;
    mac.trustedUsers = changes.trustedUsers.value_or(mac.trustedUsers);
    choose(mac.faults.pmset, changes.pmset);
    mac.faults.propertyUnreadable =
        changes.propertyUnreadable.value_or(mac.faults.propertyUnreadable);
    mac.faults.lateness = changes.lateness.value_or(mac.faults.lateness);
    choose(mac.faults.recordFolder, changes.recordFolder);
}

int complain(std::string message, int status = EXIT_FAILURE) {
    std::ranges::replace(message, '\n', ' ');
    writeStandardError("velmo-mac: " + message + "\n");
    return status;
}

int create(const MacFolder& folder) {
    if (folder.exists())
        return complain("there is a Mac in " + folder.root().string() + " already");
    if (!folder.create(ownExecutable().parent_path() / "simulated-pmset"))
        return complain("can't write into " + folder.root().string());
    return EXIT_SUCCESS;
}

int show(const MacFolder& folder) {
    auto mac = folder.load();
    if (!mac)
        return complain(folder.complaint());
    mac->settle(Clocks::steadyTime());
    Output::print(*mac, writeStandardOutput);
    return EXIT_SUCCESS;
}

int set(const MacFolder& folder, const Changes& changes) {
    if (!folder.load())
        return complain(folder.complaint());
    if (!folder.update([&](SimulatedMac& mac) {
            mac.settle(Clocks::steadyTime()); // what pmset has set shows in the file, too
            apply(changes, mac);
        }))
        return complain("can't change the machine file in " + folder.root().string());
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes a simulated Mac in a folder and changes it from outside.");
    app.require_subcommand(1);
    std::string folder;
    Changes changes;
    auto* const creating = app.add_subcommand("create", "make a Mac");
    auto* const showing = app.add_subcommand("show", "print its state as one JSON line");
    auto* const setting = app.add_subcommand("set", "change its state");
    for (auto* const verb : {creating, showing, setting})
        verb->add_option("FOLDER", folder, "where the Mac lives")->required()->envname("VELMO_MAC");
    addChangeOptions(*setting, changes);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == EXIT_SUCCESS) // it is the help
            return app.exit(error);
        return complain(std::string(error.what()) + "; see: velmo-mac --help", usageError);
    }

    const auto mac = MacFolder::named(folder);
    if (!mac)
        return complain(mac.error(), usageError);
    if (*creating)
        return create(*mac);
    return *showing ? show(*mac) : set(*mac, changes);
}
