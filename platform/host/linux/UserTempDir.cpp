#include "core/support/PathText.h"
#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/host/PtyHostFileSystem.h"

#include <cstdlib>

namespace velmo::PtyAttach {

namespace {

Pty::Environment environmentHome() {
    const char* const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    return home == nullptr || *home == '\0' ? Pty::Environment() : Pty::Environment{{"HOME", home}};
}

} // namespace

// TMPDIR would not do, because users share the folder that it names, and the system clears the
// folder that XDG_RUNTIME_DIR names when the user's last log-in ends, which sessions outlive.
std::optional<std::string> HostFileSystem::userTempDir() {
    return Pty::HostFileSystem().home(environmentHome()).transform([](const std::string& home) {
        return PathText::join(home, ".velmo");
    });
}

} // namespace velmo::PtyAttach
