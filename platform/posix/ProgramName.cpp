#include "platform/posix/ProgramName.h"

#include <filesystem>

#ifdef __APPLE__
#    include <libproc.h>

#    include <array>
#else
#    include <fstream>
#    include <system_error>
#endif

namespace velmo {

#ifdef __APPLE__

std::optional<std::string> programNameOf(std::int64_t process) {
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    if (::proc_pidpath(static_cast<int>(process), path.data(), path.size()) <= 0)
        return std::nullopt;
    return std::filesystem::path(path.data()).filename().string();
}

#else

std::optional<std::string> programNameOf(std::int64_t process) {
    const auto folder = std::filesystem::path("/proc") / std::to_string(process);
    std::error_code error;
    auto name = std::filesystem::read_symlink(folder / "exe", error).filename().string();
    if (!error) {
        // The kernel marks a program with this once its file has been removed or replaced.
        constexpr std::string_view gone = " (deleted)";
        if (name.ends_with(gone))
            name.resize(name.size() - gone.size());
        return name;
    }
    // For another user's process only a name is readable, which the kernel cuts to 15 bytes.
    std::ifstream file(folder / "comm");
    if (!std::getline(file, name))
        return std::nullopt;
    return name;
}

#endif

} // namespace velmo
