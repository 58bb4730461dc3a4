#include "bench/Suite.h"
#include "core/power/PowerService.h"
#include "lab/instruments/RawClient.h"
#include "lab/instruments/TemporaryFolder.h"
#include "lab/instruments/WatchedProcess.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/simulated/MacFolder.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

namespace velmo::bench {

namespace {

/// A simulated Mac, and its daemon as a real process.
class RunningDaemon {
public:
    RunningDaemon() {
        if (!mac_.create(programs_ / "simulated-pmset"))
            throw std::runtime_error("no simulated Mac");
        const std::string root = mac_.root().string();
        daemon_ =
            std::make_unique<WatchedProcess>((programs_ / "VelmoPowerDaemonSimulated").string(),
                                             std::vector<std::string_view>{root});
        while (!std::filesystem::exists(socket_))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    [[nodiscard]] RawClient connect() const { return RawClient(socket_); }

    /// Runs pmset twice, as the daemon does for a hold and its release.
    [[nodiscard]] bool runTools() const {
        const auto set = [&](std::string_view value) {
            return outputOf(mac_.pmset().string(),
                            std::to_array<std::string_view>({"-a", "disablesleep", value}));
        };
        return set("1") && set("0");
    }

private:
    std::filesystem::path programs_ = ownExecutable().parent_path();
    TemporaryFolder temporary_;
    MacFolder mac_{temporary_.path() / "mac"};
    std::filesystem::path socket_ = mac_.socket(powerDaemonMachService);
    std::unique_ptr<WatchedProcess> daemon_;
};

} // namespace

void addDaemon(Suite& suite) {
    // Every run has a daemon of its own, because a daemon that gets no call for a minute ends.
    suite.compare({.what = "a hold and its release",
                   .input = "one client; the difference is the daemon's own",
                   .aims = {{.contender = "the two runs of pmset",
                             .factor = 0.5,
                             .doesLess = "hold nothing"}}},
                  {{ours,
                    [](benchmark::State& state) {
                        const RunningDaemon daemon;
                        const RawClient client = daemon.connect();
                        for (auto _ : state) {
                            if (client.call(R"({"call":"hold","batteryFloor":20})")
                                    != R"({"ok":true,"reason":""})"
                                || client.call(R"({"call":"release"})") != R"({"ok":true})")
                                state.SkipWithError("the daemon refused");
                        }
                    }},
                   {"the two runs of pmset", [](benchmark::State& state) {
                        const RunningDaemon daemon;
                        for (auto _ : state) {
                            if (!daemon.runTools())
                                state.SkipWithError("pmset failed");
                        }
                    }}});
}

} // namespace velmo::bench
