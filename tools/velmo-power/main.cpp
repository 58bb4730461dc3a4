/// velmo-power: keeps a Mac awake from the command line, and reports the state of its power.

#include "core/output/Output.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/simulated/SimulatedAccess.h"
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

#include <algorithm>
#include <chrono>
#include <cstdlib>
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
        if (!mac)
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
    if (request->inBackground && !readyDescriptor)
        return holdInBackground(birth_, arguments_);
    request->readyDescriptor = readyDescriptor;
    return HoldCommand(context_, std::move(mac), *std::move(request), birth_).run();
}

int Program::release(PowerAccess& mac) {
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
    if (isQuiet())
        return ExitStatus::success;
    if (!before)
        writeStandardOutput("nobody holds any more\n");
    else if (const auto& holder = before->holder)
        writeStandardOutput("released the hold of " + holderText(*holder) + ", in force since "
                            + timeOfDayText({holder->since}, mac.machine->wallTime()) + "\n");
    else
        writeStandardOutput(before->pending ? "nobody held; sleep is enabled again\n"
                                            : "nobody held\n");
    return ExitStatus::success;
}

PowerStatus Program::readAll(PowerAccess& mac, Conversation& daemon) {
    PowerStatus status = readStatus(*mac.machine, true);
    if (auto holds = daemon.report())
        status.holds = *std::move(holds);
    return status;
}

int Program::status(PowerAccess& mac) {
    Conversation daemon(context_, *mac.link, complain);
    std::string shown;
    while (true) {
        const PowerStatus status = readAll(mac, daemon);
        std::string text;
        if (line_.has("--json"))
            Output::print(status, [&](std::string_view line) { text = line; });
        else
            text = statusText(status, mac.machine->wallTime());
        if (text != shown)
            writeStandardOutput((shown.empty() || line_.has("--json") ? "" : "\n") + text);
        if (!line_.has("--watch"))
            return ExitStatus::success;
        shown = std::move(text);
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

int Program::doctor(PowerAccess& mac) {
    const Installation installation = mac.examine();
    const auto report = Conversation(context_, *mac.link, complain).report();
    const auto findings =
        diagnose(installation, *mac.machine, report ? std::optional(*report) : std::nullopt,
                 report ? "" : failureText(report.error()));
    writeStandardOutput(findingsText(findings, installation));
    const bool isWell = std::ranges::none_of(
        findings, [](const Finding& each) { return each.kind == Finding::Kind::bad; });
    return isWell ? ExitStatus::success : ExitStatus::refused;
}

/// Wrong usage with a command looks like any other failure before the command ran.
int usageStatus(std::span<const std::string_view> arguments) {
    const auto has = [&](std::string_view word) {
        return std::ranges::find(arguments, word) != arguments.end();
    };
    return has(PowerVerb::hold) && has("--") ? ExitStatus::withCommand : ExitStatus::usage;
}

} // namespace

int main(int argc, char** argv) {
    const ProcessBirth birth = ProcessBirth::read();
    prepareProcess();
    std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto readyDescriptor = takeReadyDescriptor(arguments);

    const auto line = CommandLine::read(powerCommandLine, arguments);
    if (!line) {
        complain(line.error());
        return usageStatus(arguments);
    }
    if (const auto page = CommandLine::ownPage(powerCommandLine, *line)) {
        writeStandardOutput(*page);
        return ExitStatus::success;
    }
    return Program(*line, arguments, birth).run(readyDescriptor);
}
