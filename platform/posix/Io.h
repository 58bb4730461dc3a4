#pragma once

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Reading and writing descriptors to the end, whatever signals arrive meanwhile.
namespace velmo {

/// Repeats a system call that a signal interrupted.
template<class Call>
auto retryInterrupted(const Call& call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Neither a folder nor a FIFO, a socket or a device.
bool isRegularFile(int descriptor);

/// All bytes up to the end; absent on an error or when there are more than `limit`.
std::optional<std::string> readToEnd(int descriptor, std::size_t limit);

/// Whether every byte was written.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace velmo
