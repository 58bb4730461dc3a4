/// The "pmset" of a simulated Mac. The path by which it was called, FOLDER/usr/bin/pmset, tells
/// which Mac is meant. The calls are those that the power daemon and its client make:
///
///     pmset -g                       print the settings
///     pmset -a disablesleep 1|0      keep the Mac awake, lid closed too, or let it sleep
///     pmset displaysleepnow          turn the display off

#include "platform/posix/Clocks.h"
#include "platform/posix/StandardStreams.h"
#include "platform/simulated/MacFolder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <span>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using namespace velmo;

constexpr int failure = 1;
constexpr int usageError = 64;

int complain(std::string_view message) {
    writeStandardError("pmset: " + std::string(message) + "\n");
    return failure;
}

/// Blocks as a hung tool does, until a person or a test takes the fault out of the machine file.
void hang(const MacFolder& folder) {
    using namespace std::chrono_literals;
    std::ofstream(folder.signOfHungPmset()).flush();
    for (auto mac = folder.load(); mac && mac->faults.pmset == PmsetFault::hangs;
         mac = folder.load())
        std::this_thread::sleep_for(20ms);
    std::error_code unimportant;
    std::filesystem::remove(folder.signOfHungPmset(), unimportant);
}

/// Prints in the layout of the real tool. The daemon reads only the line "SleepDisabled".
int printSettings(const SimulatedMac& mac) {
    std::string text("System-wide power settings:\n SleepDisabled\t\t");
    text += mac.preference() ? '1' : '0';
    text += "\nCurrently in use:\n"
            " standby              1\n"
            " hibernatemode        3\n"
            " displaysleep         10\n"
            " sleep                1\n"
            " womp                 0\n";
    writeStandardOutput(text);
    return EXIT_SUCCESS;
}

int setSleepDisabled(const MacFolder& folder, bool disabled) {
    const double now = Clocks::steadyTime().seconds;
    const bool done = folder.update([&](SimulatedMac& mac) {
        mac.settle({now}); // a setting that is not due by now is dropped: the newest alone counts
        mac.late = {.sleepDisabled = disabled, .due = now + mac.faults.lateness / 1000};
        mac.settle({now});
    });
    return done ? EXIT_SUCCESS : complain("the machine file can't be written");
}

int turnDisplayOff(const MacFolder& folder) {
    const bool done = folder.update([](SimulatedMac& mac) { mac.displayIsOff = true; });
    return done ? EXIT_SUCCESS : complain("the machine file can't be written");
}

int run(const MacFolder& folder, const std::vector<std::string_view>& words) {
    auto mac = folder.load();
    if (!mac)
        return complain(folder.complaint());
    switch (mac->faults.pmset) {
    case PmsetFault::fails:
        return complain("failed, as the machine file says");
    case PmsetFault::dies:
        return std::raise(SIGKILL);
    case PmsetFault::hangs:
        hang(folder);
        mac = folder.load().value_or(*mac);
        break;
    case PmsetFault::none:
    case PmsetFault::lies:
        break;
    }

    if (words == std::vector<std::string_view>{"-g"})
        return printSettings(*mac);
    if (words == std::vector<std::string_view>{"displaysleepnow"})
        return turnDisplayOff(folder);
    const bool sets = words.size() == 3 && words[0] == "-a" && words[1] == "disablesleep"
                      && (words[2] == "0" || words[2] == "1");
    if (!sets) {
        complain("usage: pmset -g | pmset -a disablesleep 0|1 | pmset displaysleepnow");
        return usageError;
    }
    if (mac->faults.pmset == PmsetFault::lies)
        return EXIT_SUCCESS;
    return setSleepDisabled(folder, words[2] == "1");
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> words(argv, argv + argc);
    if (words.empty() || !words[0].contains('/'))
        return complain("call me by my path, so that I know which Mac is meant");
    const std::filesystem::path self(words[0]);
    const auto folder = MacFolder::named(self.parent_path() / "../..");
    return folder ? run(*folder, {words.begin() + 1, words.end()}) : complain(folder.error());
}
