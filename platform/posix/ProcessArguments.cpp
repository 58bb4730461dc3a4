#include "platform/posix/ProcessArguments.h"

#include <unistd.h>

#include <cstring>

#ifdef __APPLE__
#    include <libproc.h>
#    include <sys/sysctl.h>

#    include <array>
#else
#    include "platform/posix/Descriptor.h"
#    include "platform/posix/Io.h"

#    include <fcntl.h>
#    include <sys/stat.h>
#endif

namespace velmo {

namespace {

/// Takes the first word and the NUL behind it off the bytes. Absent without a NUL.
std::optional<std::string> takeWord(std::string_view& bytes) {
    const std::size_t end = bytes.find('\0');
    if (end == std::string_view::npos)
        return std::nullopt;
    std::string word(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
    return word;
}

} // namespace

std::optional<std::vector<std::string>> parseProcessArguments(std::string_view bytes) {
    int count = 0;
    if (bytes.size() < sizeof count)
        return std::nullopt;
    std::memcpy(&count, bytes.data(), sizeof count);
    bytes.remove_prefix(sizeof count);
    if (!takeWord(bytes))
        return std::nullopt;
    const std::size_t first = bytes.find_first_not_of('\0');
    bytes.remove_prefix(first == std::string_view::npos ? bytes.size() : first);
    std::vector<std::string> words;
    for (int i = 0; i < count; ++i) {
        auto word = takeWord(bytes);
        if (!word)
            return std::nullopt;
        words.push_back(*std::move(word));
    }
    return words;
}

#ifdef __APPLE__

std::optional<std::vector<std::string>> argumentsOf(std::int64_t process) {
    const int number = static_cast<int>(process);
    proc_bsdshortinfo facts{};
    const int size = sizeof facts;
    if (::proc_pidinfo(number, PROC_PIDT_SHORTBSDINFO, 0, &facts, size) != size
        || facts.pbsi_uid != ::getuid())
        return std::nullopt;
    std::array<int, 3> name{CTL_KERN, KERN_PROCARGS2, number};
    std::size_t length = 0;
    if (::sysctl(name.data(), name.size(), nullptr, &length, nullptr, 0) != 0)
        return std::nullopt;
    std::string bytes(length, '\0');
    if (::sysctl(name.data(), name.size(), bytes.data(), &length, nullptr, 0) != 0)
        return std::nullopt;
    bytes.resize(length);
    return parseProcessArguments(bytes);
}

#else

std::optional<std::vector<std::string>> argumentsOf(std::int64_t process) {
    constexpr std::size_t maxRead = 65536;
    const std::string path = "/proc/" + std::to_string(process) + "/cmdline";
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0 || status.st_uid != ::getuid())
        return std::nullopt;
    const auto bytes = readStart(file.get(), maxRead);
    std::string_view rest = bytes ? std::string_view(*bytes) : std::string_view();
    std::vector<std::string> words;
    while (auto word = takeWord(rest))
        words.push_back(*std::move(word));
    return words.empty() ? std::nullopt : std::optional(std::move(words));
}

#endif

} // namespace velmo
