/// The power daemon on a simulated Mac: VelmoPowerDaemonSimulated FOLDER. The daemon that ships as
/// root on a Mac is another executable, with no argument that points it elsewhere.

#include "daemon/Startup.h"
#include "platform/daemon/simulated/SimulatedHost.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"

#include <cstdlib>

int main(int argc, char** argv) {
    using namespace velmo;
    prepareProcess();
    constexpr int usageError = 64;
    if (argc != 2 || argv[1][0] == '-') {
        writeStandardError("usage: VelmoPowerDaemonSimulated FOLDER\n");
        return usageError;
    }
    const MacFolder folder(argv[1]);
    if (!folder.load()) {
        writeStandardError(folder.exists()
                               ? "machine.json in " + folder.root().string() + " is not in order\n"
                               : "there is no simulated Mac in " + folder.root().string()
                                     + "; make one with: velmo-mac create FOLDER\n");
        return usageError;
    }
    const Descriptor right = folder.serve();
    if (!right) {
        writeStandardError("a daemon runs already in " + folder.root().string() + "\n");
        return EXIT_FAILURE;
    }
    allowDescriptors(4 * SocketService::maxConnections);
    auto& host = *new SimulatedHost(folder); // never destroyed
    runDaemon(host);
    return EXIT_FAILURE; // not reached: the main loop never runs out of work
}
