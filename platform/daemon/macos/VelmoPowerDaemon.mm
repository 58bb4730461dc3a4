/// The power daemon as launchd starts it: no arguments, nothing to configure.

#include "daemon/Startup.h"
#include "platform/daemon/macos/MacHost.h"
#include "platform/posix/ProcessSetup.h"

#include <cstdlib>

int main() {
    using namespace velmo;
    prepareProcess();
    @autoreleasepool {
        auto& host = *new MacHost; // never destroyed
        runDaemon(host);
    }
    return EXIT_FAILURE; // not reached: the main loop never ends
}
