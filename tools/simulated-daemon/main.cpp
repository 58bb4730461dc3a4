/// The power daemon on a simulated Mac: VelmoPowerDaemonSimulated [FOLDER]. The daemon that ships
/// as root on a Mac is another executable, with no argument that points it elsewhere.

#include "daemon/Startup.h"
#include "platform/daemon/simulated/SimulatedHost.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/simulated-daemon/DaemonCommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace velmo;

constexpr int usageError = 2;

int complain(const std::string& message, int status) {
    writeStandardError("VelmoPowerDaemonSimulated: " + message + "\n");
    return status;
}

int serve(const std::string& name) {
    const auto folder = MacFolder::named(name);
    if (!folder)
        return complain(folder.error(), usageError);
    if (!folder->load())
        return complain(folder->complaint(), usageError);
    auto right = folder->serve();
    if (!right && right.error() == std::errc::operation_would_block)
        return complain("a daemon runs already in " + folder->root().string(), EXIT_FAILURE);
    if (!right)
        return complain("can't become the daemon in " + folder->root().string() + ": "
                            + right.error().message(),
                        EXIT_FAILURE);
    allowDescriptors(4 * SocketService::maxConnections);
    auto& host = *new SimulatedHost(*folder, *std::move(right)); // never destroyed
    runDaemon(host);
    return EXIT_FAILURE; // not reached: the main loop never runs out of work
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto line = CommandLine::read(daemonCommandLine, arguments);
    if (!line)
        return complain(line.error().text, usageError);
    if (const auto page = CommandLine::ownPage(daemonCommandLine, *line))
        return writeStandardOutput(*page) ? EXIT_SUCCESS : EXIT_FAILURE;
    if (!line->words.empty())
        return serve(line->words.front());
    const char* const environment = std::getenv("VELMO_MAC"); // NOLINT(concurrency-mt-unsafe)
    if (!environment)
        return complain("give it the folder of a simulated Mac, as its one argument or in "
                        "VELMO_MAC",
                        usageError);
    return serve(environment);
}
