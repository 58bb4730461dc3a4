/// emulated-mac EXECUTABLE ARGUMENTS…: runs an arm64 executable of the Mac over shims of what it
/// imports, on Linux on such a processor or under an emulator of one, which EMULATED_PROCESSOR
/// names. EMULATED_MAC names the folder that contains the Mac.

#include "lab/emulated-mac/loader/Image.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Process.h"

#include <exception>

int main(int count, char** arguments, char** environment) {
    if (count < 2)
        velmo::endRun("usage: emulated-mac EXECUTABLE ARGUMENTS...");
    try {
        const velmo::Image image{velmo::MachOFile(arguments[1])};
        velmo::setExecutable(arguments[1]);
        velmo::watchForLedgerRequests();
        velmo::exitAfterMain(image.run(count - 1, arguments + 1, environment));
    } catch (const std::exception& error) {
        velmo::endRun(error.what());
    }
}
