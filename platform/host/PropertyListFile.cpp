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

std::optional<BundleFile> readInformation(const std::string& bundle) {
    for (const std::string& folder : {bundle, bundle + "/WrappedBundle"}) {
        for (const char* const name : {"/Contents/Info.plist", "/Info.plist"}) {
            if (auto content = readFile(folder + name))
                return BundleFile{.bundle = folder, .content = *std::move(content)};
        }
    }
    return std::nullopt;
}

std::optional<Value> read(const std::string& path) {
    return readFile(path).and_then(parse);
}

} // namespace velmo::PropertyList
