#include "platform/host/DevTerminalHost.h"

#include "core/support/PathText.h"
#include "platform/posix/DiskPath.h"
#include "platform/posix/OwnExecutable.h"

#include <unistd.h>

namespace velmo::DevTerminal {

std::optional<std::string> resolveOnDisk(std::string_view path) {
    return DiskPath::resolvedAsFarAsItExists(path);
}

bool isAllowedFolder(std::string_view path, std::string_view home) {
    return isAllowedFolder(path, home, resolveOnDisk);
}

bool isTrustedExecutable(std::string_view path) {
    const auto resolved = isSafePath(path) ? DiskPath::resolved(path) : std::nullopt;
    const auto status = resolved ? DiskPath::status(*resolved) : std::nullopt;
    return status && S_ISREG(status->st_mode) && DiskPath::isExecutable(*resolved)
           && (status->st_uid == 0 || status->st_uid == ::getuid())
           && !PathText::anyUpToTheRoot(path, isWorldWritable)
           && !PathText::anyUpToTheRoot(*resolved, isWorldWritable);
}

bool isWorldWritable(std::string_view path) {
    return DiskPath::isWorldWritable(path);
}

std::optional<std::string> ownExecutable() {
    return DiskPath::resolved(velmo::ownExecutable().string());
}

} // namespace velmo::DevTerminal
