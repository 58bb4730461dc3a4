#include "platform/host/PtyAttachHostFileSystem.h"

#include <cstdlib>

namespace velmo::PtyAttach {

// Takes the place of what ships for a Mac, where HOME does not move the private folder, so that
// what is under test never reaches the sessions of the person who runs it. Without a folder between
// HOME and "velmo-term", because the path of a Mac's socket has at most 103 bytes.
std::optional<std::string> HostFileSystem::userTempDir() {
    const char* const home = std::getenv("HOME");
    return home == nullptr ? std::nullopt : std::optional<std::string>(home);
}

} // namespace velmo::PtyAttach
