/// velmo-power: keeps a Mac awake from the command line, and tells how it stands with its power.

#include "core/output/Output.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/simulated/SimulatedAccess.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-power/ExitStatus.h"
#include "tools/velmo-power/HoldCommand.h"
#include "tools/velmo-power/StatusText.h"

#include <CLI/CLI.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace velmo;

struct Arguments {
    std::string mac; ///< folder of a simulated Mac; empty: this Mac
    std::int64_t floor = 20;
    std::vector<std::string> command;
    bool json = false;
};

int complain(std::string_view message, int exitStatus) {
    writeStandardError("velmo-power: " + std::string(message) + "\n");
    return exitStatus;
}

int status(PowerAccess& access, const Arguments& arguments) {
    const PowerStatus status = readStatus(*access.machine);
    if (arguments.json)
        Output::print(status, writeStandardOutput);
    else
        writeStandardOutput(statusText(status));
    return ExitStatus::success;
}

int release(asio::io_context& context, PowerAccess& access) {
    std::optional<bool> restored;
    const auto daemon = access.link->connect([&] { context.stop(); });
    if (!daemon)
        return complain("the power daemon can't be reached", ExitStatus::unreachable);
    daemon->release([&](bool ok) {
        restored = ok;
        context.stop();
    });
    context.run();
    if (!restored)
        return complain("the power daemon went away without an answer", ExitStatus::unreachable);
    if (!*restored)
        return complain("sleep could not be enabled again yet; the daemon keeps trying",
                        ExitStatus::refused);
    return ExitStatus::success;
}

/// The context has nothing to wait for while a connection works elsewhere, and must not run out of
/// work meanwhile.
ClientContext surroundings(asio::io_context& context) {
    return {.post =
                [work = asio::make_work_guard(context)](std::function<void()> piece) {
                    asio::post(work.get_executor(), std::move(piece));
                },
            .log = [](std::string_view message) { complain(message, ExitStatus::success); }};
}

std::optional<PowerAccess> access(asio::io_context& context, const Arguments& arguments) {
    return arguments.mac.empty() ? accessThisMac(surroundings(context))
                                 : accessSimulatedMac(context, arguments.mac);
}

int noMac(const Arguments& arguments) {
    if (!arguments.mac.empty())
        return complain("there is no simulated Mac in order in " + arguments.mac,
                        ExitStatus::usage);
    return complain("this is no Mac; name a simulated one with --mac FOLDER or VELMO_MAC",
                    ExitStatus::usage);
}

constexpr const char* footer =
    "Exit status: 0 done; 1 refused, or sleep not restored yet; 2 wrong usage; 3 no daemon;\n"
    "with COMMAND its own status, 126 and 127 when it can't be run, 128+N after signal N.";

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    Arguments arguments;
    CLI::App app("Keeps a Mac awake, lid closed too, and tells how it stands with its power.");
    app.footer(footer);
    app.require_subcommand(1);
    app.add_option("--mac", arguments.mac, "folder of a simulated Mac, in place of this one")
        ->envname("VELMO_MAC");
    auto* const holding = app.add_subcommand(
        "hold", "keep the Mac awake until Ctrl-C, or while COMMAND runs, then release");
    holding
        ->add_option("--floor", arguments.floor,
                     "battery percentage below which the hold ends; counts as 10 to 95")
        ->capture_default_str();
    holding->add_option("COMMAND", arguments.command, "program and arguments, after --");
    auto* const releasing = app.add_subcommand("release", "end the current hold, whoever holds");
    auto* const asking = app.add_subcommand("status", "print sleep, power, battery and heat");
    asking->add_flag("--json", arguments.json, "as one JSON line");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitStatus::success : ExitStatus::usage;
    }

    asio::io_context context(1);
    auto mac = access(context, arguments);
    if (!mac)
        return noMac(arguments);
    if (*asking)
        return status(*mac, arguments);
    if (*releasing)
        return release(context, *mac);
    return HoldCommand(context, *std::move(mac), arguments.floor, arguments.command).run();
}
