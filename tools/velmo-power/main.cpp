/// velmo-power: keeps a Mac awake from the command line, and reports the state of its power.

#include "core/output/Output.h"
#include "machine/PowerReadings.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/simulated/SimulatedAccess.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessArguments.h"
#include "platform/posix/ProcessBirth.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-power/Background.h"
#include "tools/velmo-power/Conversation.h"
#include "tools/velmo-power/Doctor.h"
#include "tools/velmo-power/ExitStatus.h"
#include "tools/velmo-power/HoldCommand.h"
#include "tools/velmo-power/PowerCommandLine.h"
#include "tools/velmo-power/StatusText.h"

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace velmo;

void complain(std::string_view message) {
    writeStandardError("velmo-power: " + std::string(message) + "\n");
}

/// Prints what was asked for. Returns the exit status, which tells of a full disk or a lost reader.
int print(std::string_view text) {
    if (writeStandardOutput(text))
        return ExitStatus::success;
    if (errno != EPIPE)
        complain("can't write to standard output");
    return ExitStatus::refused;
}

/// Runs one command line on one Mac.
class Program {
public:
    Program(const CommandLine::Line& line, std::span<const std::string_view> arguments,
            const ProcessBirth& birth)
        : line_(line), arguments_(arguments), birth_(birth) {}

    int run(std::optional<int> readyDescriptor);

private:
    std::expected<PowerAccess, std::string> access();
    [[nodiscard]] std::string folder() const;
    int hold(PowerAccess mac, std::optional<int> readyDescriptor);
    int status(PowerAccess& mac);
    void tellOfEnvironment() const;
    int release(PowerAccess& mac);
    int doctor(PowerAccess& mac);
    static PowerStatus readAll(PowerAccess& mac, Conversation& daemon);

    [[nodiscard]] bool isQuiet() const { return line_.has("--quiet"); }

    const CommandLine::Line& line_;
    std::span<const std::string_view> arguments_;
    const ProcessBirth& birth_;
    asio::io_context context_{1};
};

std::string Program::folder() const {
    if (const auto named = line_.value("--mac"))
        return std::string(*named);
    const char* const fromEnvironment = std::getenv("VELMO_MAC"); // NOLINT(concurrency-mt-unsafe)
    return fromEnvironment ? fromEnvironment : "";
}

std::expected<PowerAccess, std::string> Program::access() {
    if (line_.has("--mac") || !folder().empty()) {
        auto mac = accessSimulatedMac(context_, folder());
        if (!mac && folder().empty())
            mac.error() += "; --mac FOLDER or VELMO_MAC names the Mac";
        return mac;
    }
    // The context has nothing to wait for while a connection works elsewhere, and must not run out
    // of work meanwhile.
    auto mac = accessThisMac(
        {.post = [this, work = asio::make_work_guard(context_)](
                     std::function<void()> piece) { asio::post(context_, std::move(piece)); },
         .log = complain});
    if (!mac)
        return std::unexpected(
            "this is no Mac; name a simulated one with --mac FOLDER or VELMO_MAC");
    return *std::move(mac);
}

/// Says that a Mac is simulated which the environment names, and not the command line.
void Program::tellOfEnvironment() const {
    if (!line_.has("--mac") && !folder().empty() && !isQuiet())
        complain("this Mac is " + simulatedText(folder()));
}

int Program::run(std::optional<int> readyDescriptor) {
    auto mac = access();
    if (!mac) {
        complain(mac.error());
        return line_.words.empty() ? ExitStatus::usage : ExitStatus::withCommand;
    }
    if (line_.verb->name == PowerVerb::hold)
        return hold(*std::move(mac), readyDescriptor);
    if (line_.verb->name == PowerVerb::release)
        return release(*mac);
    if (line_.verb->name == PowerVerb::doctor)
        return doctor(*mac);
    return status(*mac);
}

int Program::hold(PowerAccess mac, std::optional<int> readyDescriptor) {
    auto request = HoldRequest::from(line_, mac.machine->wallTime());
    if (!request) {
        complain(request.error());
        return line_.words.empty() ? ExitStatus::usage : ExitStatus::withCommand;
    }
    if (!readyDescriptor) // the process in front says it
        tellOfEnvironment();
    if (request->inBackground && !readyDescriptor)
        return holdInBackground(birth_, arguments_);
    request->readyDescriptor = readyDescriptor;
    return HoldCommand(context_, std::move(mac), *std::move(request), birth_).run();
}

int Program::release(PowerAccess& mac) {
    tellOfEnvironment();
    Conversation daemon(context_, *mac.link, complain);
    const auto before = daemon.report();
    if (!before && before.error() != Conversation::Failure::gone) {
        complain(failureText(before.error()));
        return ExitStatus::unreachable;
    }
    const auto restored = daemon.release();
    if (!restored) {
        complain(failureText(restored.error()));
        return ExitStatus::unreachable;
    }
    if (!*restored) {
        complain("sleep could not be enabled again yet; the power daemon keeps trying");
        return ExitStatus::refused;
    }
    const bool isHeld = before && before->holder;
    if (before && !isHeld && before->recordIsUnreadable) {
        complain("nobody held, but the power daemon's record can't be read: sleep may still be "
                 "disabled; velmo-power status says what to do");
        return ExitStatus::refused;
    }
    if (isQuiet())
        return ExitStatus::success;
    const std::string sleep =
        sleepDisabledNow(*mac.machine) == true ? "; sleep stays disabled" : "";
    if (!before)
        return print("nobody holds any more" + sleep + "\n");
    if (isHeld)
        return print("released the hold of " + holderText(*before->holder) + ", in force since "
                     + timeOfDayText({before->holder->since}, mac.machine->wallTime())
                     + (sleep.empty() ? "" : sleep + ", as it was before that hold") + "\n");
    if (before->pending)
        return print("nobody held; sleep is enabled again\n");
    return print("nobody held" + (sleep.empty() ? "" : sleep + ", and not by the power daemon")
                 + "\n");
}

/// Returns what the holder runs, if it is a velmo-power of this user.
std::optional<std::string> commandOf(const std::optional<HolderReport>& holder) {
    if (!holder || !holder->processId || holder->program != powerCommandLine.name)
        return std::nullopt;
    return argumentsOf(*holder->processId).and_then(commandText);
}

PowerStatus Program::readAll(PowerAccess& mac, Conversation& daemon) {
    PowerStatus status = readStatus(*mac.machine, true);
    if (auto holds = daemon.report()) {
        status.holds = *std::move(holds);
        status.command = commandOf(status.holds->holder);
    } else {
        status.whyUntold = failureText(holds.error());
    }
    return status;
}

int Program::status(PowerAccess& mac) {
    Conversation daemon(context_, *mac.link, complain);
    std::optional<PowerStatus> shown;
    while (true) {
        const PowerStatus status = readAll(mac, daemon);
        const int exitStatus = status.holds ? ExitStatus::success : ExitStatus::unreachable;
        if (!shown || !isSameStatus(status, *shown)) {
            std::string text = shown && !line_.has("--json") ? "\n" : "";
            if (line_.has("--json"))
                Output::print(status, [&](std::string_view line) { text += line; });
            else
                text += statusText(status, mac.machine->wallTime(), folder());
            if (const int printed = print(text); printed != ExitStatus::success)
                return printed;
        }
        if (!line_.has("--watch"))
            return exitStatus;
        shown = status;
        std::this_thread::sleep_for(std::chrono::seconds(1));
        if (isReaderGone(STDOUT_FILENO))
            return ExitStatus::refused;
    }
}

int Program::doctor(PowerAccess& mac) {
    const Installation installation = mac.examine();
    const auto report = Conversation(context_, *mac.link, complain).report();
    const auto findings = diagnose(installation, *mac.machine, report);
    if (const int printed = print(findingsText(findings, installation));
        printed != ExitStatus::success)
        return printed;
    const bool isWell = std::ranges::none_of(
        findings, [](const Finding& each) { return each.kind == Finding::Kind::bad; });
    return isWell ? ExitStatus::success : ExitStatus::refused;
}

bool namesCommand(const std::expected<CommandLine::Line, CommandLine::Mistake>& line) {
    return line ? !line->words.empty() : line.error().namesCommand;
}

/// Runs the program. A mistake of usage with a command looks like any other failure before the
/// command ran.
int run(const std::expected<CommandLine::Line, CommandLine::Mistake>& line,
        std::span<const std::string_view> arguments, std::optional<int> readyDescriptor,
        const ProcessBirth& birth) {
    if (!line) {
        complain(line.error().text);
        return namesCommand(line) ? ExitStatus::withCommand : ExitStatus::usage;
    }
    if (const auto page = CommandLine::ownPage(powerCommandLine, *line))
        return print(*page);
    return Program(*line, arguments, birth).run(readyDescriptor);
}

} // namespace

int main(int argc, char** argv) {
    const ProcessBirth birth = ProcessBirth::read();
    prepareProcess();
    bool hasCommand = false;
    try {
        std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
        const auto readyDescriptor = takeReadyDescriptor(arguments);
        const auto line = CommandLine::read(powerCommandLine, arguments);
        hasCommand = namesCommand(line);
        return run(line, arguments, readyDescriptor, birth);
    } catch (const std::exception& lack) { // of memory, descriptors or threads
        complain(lack.what());
        return hasCommand ? ExitStatus::withCommand : ExitStatus::refused;
    }
}
