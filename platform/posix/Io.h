#pragma once

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Reads and writes descriptors to the end, even if signals interrupt the calls.
namespace velmo {

/// Makes a system call, and repeats it as long as a signal interrupts it.
template<class Call>
auto retryInterrupted(const Call& call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Tells whether the descriptor is a regular file, and not a folder, FIFO, socket or device.
bool isRegularFile(int descriptor);

/// Returns all bytes up to the end; absent on an error, or if there are more than `maxSize`.
std::optional<std::string> readToEnd(int descriptor, std::size_t maxSize);

/// Returns the first `maxSize` bytes, or all if there are fewer; absent on an error.
std::optional<std::string> readStart(int descriptor, std::size_t maxSize);

/// Writes all the bytes. Returns false on an error, after which some may have been written.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace velmo
