#include "platform/host/PropertyListFile.h"

#include "platform/host/PropertyList.h"
#include "platform/host/PropertyListBounds.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"

#include <fcntl.h>

namespace velmo::PropertyList {

std::optional<std::string> readFile(const std::string& path) {
    if (path.contains('\0'))
        return std::nullopt;
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const Descriptor file(retryInterrupted([&] { return ::open(path.c_str(), flags); }));
    return file && isRegularFile(file.get()) ? readToEnd(file.get(), PropertyListBounds::maxBytes)
                                             : std::nullopt;
}

std::optional<std::string> readInformation(const std::string& bundle) {
    return readFile(bundle + "/Contents/Info.plist").or_else([&] {
        return readFile(bundle + "/Info.plist");
    });
}

std::optional<Value> read(const std::string& path) {
    return readFile(path).and_then(parse);
}

} // namespace velmo::PropertyList
