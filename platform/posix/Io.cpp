#include "platform/posix/Io.h"

#include <sys/stat.h>
#include <unistd.h>

namespace velmo {

bool isRegularFile(int descriptor) {
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

std::optional<std::string> readToEnd(int descriptor, std::size_t maxSize) {
    std::string bytes;
    char buffer[4096];
    while (true) {
        const ssize_t count =
            retryInterrupted([&] { return ::read(descriptor, buffer, sizeof buffer); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return bytes;
        bytes.append(buffer, static_cast<std::size_t>(count));
        if (bytes.size() > maxSize)
            return std::nullopt;
    }
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
