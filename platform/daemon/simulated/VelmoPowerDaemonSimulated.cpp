/// The power daemon on a simulated Mac: VelmoPowerDaemonSimulated [FOLDER]. The daemon that ships
/// as root on a Mac is another executable, with no argument that points it elsewhere.

#include "daemon/Startup.h"
#include "platform/daemon/simulated/SimulatedHost.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"

#include <cstdlib>
#include <string>
#include <utility>

namespace {

constexpr int usageError = 2;

int complain(const std::string& message, int status) {
    velmo::writeStandardError("VelmoPowerDaemonSimulated: " + message + "\n");
    return status;
}

} // namespace

int main(int argc, char** argv) {
    using namespace velmo;
    prepareProcess();
    const char* const name = argc < 2 ? std::getenv("VELMO_MAC") : argv[1];
    if (argc > 2 || !name || name[0] == '-')
        return complain("give it the folder of a simulated Mac, as its one argument or in "
                        "VELMO_MAC",
                        usageError);
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
