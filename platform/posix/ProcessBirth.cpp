#include "platform/posix/ProcessBirth.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string_view>

namespace velmo {

namespace {

struct FolderEnd {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Returns the descriptors that are open now, except the one that lists them; absent where the
/// system does not have the folder /dev/fd.
std::optional<std::vector<int>> openDescriptors() {
    const std::unique_ptr<DIR, FolderEnd> folder(::opendir("/dev/fd"));
    if (!folder)
        return std::nullopt;
    std::vector<int> numbers;
    while (const dirent* const entry = ::readdir(folder.get())) {
        const std::string_view name(entry->d_name);
        int number = -1;
        const auto [end, error] = std::from_chars(name.begin(), name.end(), number);
        if (error == std::errc() && end == name.end() && number != ::dirfd(folder.get()))
            numbers.push_back(number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace

ProcessBirth ProcessBirth::read() {
    ProcessBirth birth;
    sigemptyset(&birth.ignored_);
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action{};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
            sigaddset(&birth.ignored_, signal);
    }
    pthread_sigmask(SIG_SETMASK, nullptr, &birth.mask_);
    if (auto numbers = openDescriptors()) {
        birth.descriptors_ = *std::move(numbers);
        birth.knowsDescriptors_ = true;
    }
    return birth;
}

bool ProcessBirth::hadOpen(int descriptor) const {
    return !knowsDescriptors_ || std::ranges::binary_search(descriptors_, descriptor);
}

void ProcessBirth::keepLaterDescriptors() const {
    for (const int descriptor : openDescriptors().value_or(std::vector<int>())) {
        if (descriptor > STDERR_FILENO && !hadOpen(descriptor))
            ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
}

void ProcessBirth::restore() const {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action{};
        action.sa_handler = ignored(signal) ? SIG_IGN : SIG_DFL;
        ::sigaction(signal, &action, nullptr); // fails for SIGKILL and SIGSTOP, which never change
    }
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (!hadOpen(descriptor))
            ::close(descriptor);
    }
}

} // namespace velmo
