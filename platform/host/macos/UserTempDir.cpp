#include "platform/host/PtyAttachHostFileSystem.h"

#include <unistd.h>

#include <array>
#include <climits>

namespace velmo::PtyAttach {

std::optional<std::string> HostFileSystem::userTempDir() {
    std::array<char, PATH_MAX> path{};
    const std::size_t length = ::confstr(_CS_DARWIN_USER_TEMP_DIR, path.data(), path.size());
    if (length == 0 || length > path.size())
        return std::nullopt;
    return path.data();
}

} // namespace velmo::PtyAttach
