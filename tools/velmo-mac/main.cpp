/// velmo-mac: makes a simulated Mac and does to it what happens to Macs: the plug is pulled, the
/// battery runs down, the Mac overheats under its lid, a tool breaks, hours pass.

#include "core/output/Output.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/StandardStreams.h"
#include "platform/simulated/MacFolder.h"
#include "tools/velmo-mac/MacCommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velmo;

constexpr int usageError = 2;

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

int set(const MacFolder& folder, const CommandLine::Line& line) {
    auto mac = folder.load();
    if (!mac)
        return complain(folder.complaint());
    // Tried on a copy first, so that a refused value changes nothing.
    if (const auto error = applyChanges(line, *mac))
        return complain(*error, usageError);
    if (!folder.update([&](SimulatedMac& current) {
            current.settle(Clocks::steadyTime()); // so that the file has what pmset has set
            static_cast<void>(applyChanges(line, current));
        }))
        return complain("can't change the machine file in " + folder.root().string());
    return EXIT_SUCCESS;
}

int run(const CommandLine::Line& line) {
    const char* const environment = std::getenv("VELMO_MAC"); // NOLINT(concurrency-mt-unsafe)
    if (line.words.empty() && !environment)
        return complain("name the folder of a simulated Mac: velmo-mac "
                            + std::string(line.verb->name) + " FOLDER, or VELMO_MAC",
                        usageError);
    const auto folder = MacFolder::named(line.words.empty() ? environment : line.words.front());
    if (!folder)
        return complain(folder.error(), usageError);
    if (line.verb->name == MacVerb::create)
        return create(*folder);
    return line.verb->name == MacVerb::show ? show(*folder) : set(*folder, line);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto line = CommandLine::read(macCommandLine, arguments);
    if (!line)
        return complain(line.error().text, usageError);
    if (const auto page = CommandLine::ownPage(macCommandLine, *line)) {
        writeStandardOutput(*page);
        return EXIT_SUCCESS;
    }
    return run(*line);
}
