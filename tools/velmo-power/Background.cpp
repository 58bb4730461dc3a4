#include "tools/velmo-power/Background.h"

#include "core/support/Decimal.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Io.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/StandardStreams.h"
#include "platform/posix/UserCommand.h"
#include "tools/velmo-power/ExitStatus.h"

#include <fcntl.h>
#include <unistd.h>

#include <span>
#include <string>

namespace velmo {

namespace {

constexpr std::string_view readyOption = "--ready-descriptor";

} // namespace

int holdInBackground(const ProcessBirth& birth, std::span<const std::string_view> arguments) {
    auto ready = makePipe();
    std::vector<std::string> words{ownExecutable().string(), std::string(readyOption)};
    if (ready) {
        words.push_back(std::to_string(ready->writeEnd.get()));
        words.insert(words.end(), arguments.begin(), arguments.end());
    }
    const auto child =
        ready ? startCommand(words, birth, ready->writeEnd.get()) : std::unexpected(errno);
    if (!child) {
        writeStandardError("velmo-power: can't start another process\n");
        return ExitStatus::withCommand;
    }
    ready->writeEnd.reset();
    char held = 0;
    if (retryInterrupted([&] { return ::read(ready->readEnd.get(), &held, 1); }) != 1)
        return waitForChild(*child).value_or(ExitStatus::refused);
    writeStandardOutput(std::to_string(*child) + "\n");
    return ExitStatus::success;
}

std::optional<std::string_view> takeReadyOption(std::vector<std::string_view>& arguments) {
    if (arguments.size() < 2 || arguments.front() != readyOption)
        return std::nullopt;
    const std::string_view value = arguments[1];
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    return value;
}

std::optional<int> takeReadyDescriptor(std::vector<std::string_view>& arguments) {
    const auto descriptor = takeReadyOption(arguments).and_then(
        [](std::string_view value) { return Decimal::parseUnsigned<int>(value); });
    if (!descriptor || ::fcntl(*descriptor, F_SETFD, FD_CLOEXEC) != 0)
        return std::nullopt;
    ::setsid();
    return descriptor;
}

} // namespace velmo
