#include "platform/posix/OwnExecutable.h"

#include <system_error>

#ifdef __APPLE__
#    include <mach-o/dyld.h>

#    include <array>
#    include <climits>
#endif

namespace velmo {

std::filesystem::path ownExecutable() {
    std::error_code error;
#ifdef __APPLE__
    std::array<char, PATH_MAX> path{};
    auto size = static_cast<std::uint32_t>(path.size());
    if (::_NSGetExecutablePath(path.data(), &size) != 0)
        return {};
    return std::filesystem::canonical(path.data(), error);
#else
    return std::filesystem::read_symlink("/proc/self/exe", error);
#endif
}

} // namespace velmo
