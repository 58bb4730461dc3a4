#include "platform/posix/Io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace velmo {

bool isRegularFile(int descriptor) {
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

std::optional<std::string> readStart(int descriptor, std::size_t maxSize) {
    std::string bytes;
    char buffer[4096];
    while (bytes.size() < maxSize) {
        const std::size_t wanted = std::min(sizeof buffer, maxSize - bytes.size());
        const ssize_t count = retryInterrupted([&] { return ::read(descriptor, buffer, wanted); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return bytes;
}

std::optional<std::string> readToEnd(int descriptor, std::size_t maxSize) {
    auto bytes = readStart(descriptor, maxSize + 1);
    return bytes && bytes->size() <= maxSize ? std::move(bytes) : std::nullopt;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            retryInterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace velmo
