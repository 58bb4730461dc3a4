#include "platform/posix/PropertyList.h"

#include "core/support/PropertyListBounds.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace velmo::PropertyList {

std::optional<std::string> readFile(const std::string& path) {
    if (path.contains('\0'))
        return std::nullopt;
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const Descriptor file(retryInterrupted([&] { return ::open(path.c_str(), flags); }));
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return readToEnd(file.get(), PropertyListBounds::maxBytes);
}

std::optional<std::string> readInformation(const std::string& bundle) {
    return readFile(bundle + "/Contents/Info.plist").or_else([&] {
        return readFile(bundle + "/Info.plist");
    });
}

} // namespace velmo::PropertyList
