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
        // So the kernel marks a program whose file has been replaced.
        constexpr std::string_view gone = " (deleted)";
        if (name.ends_with(gone))
            name.resize(name.size() - gone.size());
        return name;
    }
    // Another user's process: what anyone may read is its name, cut to 15 bytes.
    std::ifstream file(folder / "comm");
    if (!std::getline(file, name))
        return std::nullopt;
    return name;
}

#endif

} // namespace velmo
