#pragma once

#include "core/power/PowerService.h"
#include "core/support/Text.h"
#include "lab/instruments/RawClient.h"
#include "lab/instruments/TemporaryFolder.h"
#include "lab/instruments/WatchedProcess.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/simulated/MacFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace velmo {

inline constexpr const char* holdCall = R"({"call":"hold","batteryFloor":20})";
inline constexpr const char* heartbeatCall = R"({"call":"heartbeat"})";
inline constexpr const char* releaseCall = R"({"call":"release"})";
inline constexpr const char* held = R"({"ok":true,"reason":""})";
inline constexpr const char* yes = R"({"ok":true})";

/// A simulated Mac with the daemon as a real process.
class DaemonTest : public testing::Test {
protected:
    DaemonTest() {
        prepareProcess();
        EXPECT_TRUE(mac.create(VELMO_PROGRAMS "/simulated-pmset"));
    }

    [[nodiscard]] std::unique_ptr<WatchedProcess> run(const char* program,
                                                      std::vector<std::string_view> words) const {
        return std::make_unique<WatchedProcess>(std::string(VELMO_PROGRAMS "/") + program, words);
    }

    void startDaemon() {
        std::filesystem::remove(socket);
        daemon = std::make_unique<WatchedProcess>(VELMO_PROGRAMS "/VelmoPowerDaemonSimulated",
                                                  std::vector<std::string_view>{root},
                                                  WatchedProcess::OnLine{}, ChildGroup::own);
        ASSERT_TRUE(appears(socket));
    }

    [[nodiscard]] static bool appears(const std::filesystem::path& file) {
        for (int i = 0; i < 4000 && !std::filesystem::exists(file); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return std::filesystem::exists(file);
    }

    [[nodiscard]] std::unique_ptr<WatchedProcess>
    velmoPower(std::vector<std::string_view> words) const {
        words.insert(words.begin(), {"--mac", root});
        return run("velmo-power", words);
    }

    /// Runs velmo-mac with these words and returns its exit status.
    [[nodiscard]] std::optional<int> velmoMac(const std::string& line) const {
        return run("velmo-mac", Text::pieces(line, Text::isBlank))->waitForEnd();
    }

    [[nodiscard]] RawClient connect() const { return RawClient(socket); }

    [[nodiscard]] bool sleepDisabled() const { return mac.load().value().sleepDisabled; }

    /// Returns the memory of the daemon in KiB; 0 on a system without /proc.
    [[nodiscard]] long residentMemory() const {
        std::ifstream status("/proc/" + std::to_string(daemon->pid()) + "/status");
        for (std::string word; status >> word;) {
            long size = 0;
            if (word == "VmRSS:" && status >> size)
                return size;
        }
        return 0;
    }

    TemporaryFolder temporary;
    MacFolder mac{temporary.path() / "mac"};
    std::string root = mac.root().string();
    std::filesystem::path socket = mac.socket(powerDaemonMachService);
    std::unique_ptr<WatchedProcess> daemon;
};

} // namespace velmo
