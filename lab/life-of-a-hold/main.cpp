/// Plays one whole life of a hold on a simulated Mac, with real processes, a real socket, real
/// signals and real files: prints what happens in words, and beside it the daemon's own log lines.
/// Every step is checked; the first that fails ends the play with status 1. Only the Mac's clock is
/// not real: the play moves it instead of waiting for a minute.

#include "core/power/PowerService.h"
#include "lab/instruments/PlaySteps.h"
#include "lab/instruments/WatchedProcess.h"
#include "platform/client/simulated/SocketClient.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "platform/simulated/MacFolder.h"

#include <asio/io_context.hpp>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace velmo;
namespace fs = std::filesystem;

class Play {
public:
    explicit Play(const fs::path& folder)
        : programs_(ownExecutable().parent_path()),
          mac_(folder / "mac"),
          idleMac_(folder / "idle"),
          shutMac_(folder / "shut") {
        for (const MacFolder* mac : {&mac_, &idleMac_, &shutMac_})
            if (!mac->create(programs_ / "simulated-pmset"))
                throw std::runtime_error("can't write into " + folder.string());
    }

    void run() {
        daemonHasNothingToDo();
        holdEndsWithTheLidShut();
        holdAndHeartbeat();
        secondClientRides();
        batteryFallsBelowTheFloor();
        otherMacSleepsInItsBag();
        daemonIsKilledAndRecovers();
        clientIsKilled();
        clientReleases();
        daemonIsToldToStop();
        daemonExitsWhenIdle();
    }

private:
    using Process = std::unique_ptr<WatchedProcess>;

    Process start(const char* program, std::vector<std::string_view> arguments,
                  const std::string& margin) {
        return std::make_unique<WatchedProcess>(
            (programs_ / program).string(), arguments,
            [margin](const std::string& line) { say(margin + line); });
    }

    void startDaemon() { daemon_ = startDaemon(mac_, "  | "); }

    Process startDaemon(const MacFolder& mac, const std::string& margin) {
        const auto socket = mac.socket(powerDaemonMachService);
        fs::remove(socket);
        const std::string folder = mac.root().string();
        auto daemon = start("VelmoPowerDaemonSimulated", {folder}, margin);
        for (int i = 0; i < 2000 && !fs::exists(socket); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        require(fs::exists(socket), "the daemon listens");
        return daemon;
    }

    Process startClient() { return startClient(mac_); }

    Process startClient(const MacFolder& mac) {
        const std::string folder = mac.root().string();
        return start("velmo-power", {"--mac", folder, "hold", "--floor", "30"},
                     "  > velmo-power: ");
    }

    void change(const std::function<void(SimulatedMac&)>& change) { changeOn(mac_, change); }

    static void changeOn(const MacFolder& mac, const std::function<void(SimulatedMac&)>& change) {
        require(mac.update(change), "the machine file is changed");
    }

    void expectLog(const std::string& text) { expectLog(daemon_, text); }

    static void expectLog(const Process& daemon, const std::string& text) {
        require(daemon->waitForLine(text), "the daemon's log says: " + text);
    }

    void expectHeld(bool held) { expectHeld(mac_, held); }

    static void expectHeld(const MacFolder& mac, bool held) {
        const auto record = mac.inside("/var/db/velmo/power-daemon.json");
        require(mac.load()->preference() == held,
                held ? "sleep is disabled" : "sleep is enabled again");
        require(fs::exists(record) == held,
                held ? "the record is on disk" : "no record is left on disk");
    }

    static void expectHold(const Process& client) {
        require(client->waitForLine("holding"), "the client holds");
    }

    /// The daemons tick every 5 seconds. What a tick does on the other Macs is looked at later, so
    /// that one wait serves all three.
    void daemonHasNothingToDo() {
        say("On another Mac a daemon starts and has nothing to do, and a minute passes there.");
        idleDaemon_ = startDaemon(idleMac_, "  second Mac | ");
        changeOn(idleMac_, [](SimulatedMac& mac) { mac.elapsed += 61; });
    }

    void holdEndsWithTheLidShut() {
        say("On a third Mac a client holds, the lid is shut, the hold ends, and half a minute "
            "passes.");
        shutDaemon_ = startDaemon(shutMac_, "  third Mac | ");
        client_ = startClient(shutMac_);
        expectHold(client_);
        changeOn(shutMac_, [](SimulatedMac& mac) { mac.lid = Lid::shut; });
        client_->signal(SIGINT);
        require(client_->waitForEnd() == 0, "the client ends with status 0");
        changeOn(shutMac_, [](SimulatedMac& mac) { mac.elapsed += 30; });
    }

    void holdAndHeartbeat() {
        say("A Mac on battery power, at 80 %. Its power daemon starts.");
        change([](SimulatedMac& mac) { mac.mains = false; });
        startDaemon();
        say("The host asks to keep the Mac awake, down to 30 % of battery.");
        host_ = SocketClient::connect(context_, mac_.socket(powerDaemonMachService),
                                      [this](PowerLink::Loss) { context_.stop(); });
        require(host_ != nullptr, "the host is connected");
        require(ask([this](const auto& answer) {
                    host_->hold(30, [=](bool ok, std::string_view) { answer(ok); });
                }),
                "the host holds");
        expectLog("sleep disabled (closed lid) for a Velmo client");
        expectHeld(true);
        say("Heartbeats keep the hold: twice 30 s pass on the Mac, with a heartbeat after each.");
        for (int i = 0; i < 2; ++i) {
            change([](SimulatedMac& mac) { mac.elapsed += 30; });
            require(ask([this](const auto& answer) { host_->heartbeat(answer); }),
                    "the heartbeat is answered: still held");
        }
        expectHeld(true);
    }

    /// Makes one call of the host and returns the reply's `ok`; false if no reply comes.
    bool ask(const std::function<void(VelmoPowerProtocol::Reply)>& call) {
        bool answered = false;
        call([&](bool ok) {
            answered = ok;
            context_.stop();
        });
        context_.restart();
        context_.run_for(WatchedProcess::patience);
        return answered;
    }

    void secondClientRides() {
        say("A second client asks too. The Mac is awake already: it rides on the host's hold.");
        client_ = startClient();
        require(client_->waitForLine("held awake already, by life-of-a-hold"),
                "it is told whose hold it is");
        expectHeld(true);
    }

    void batteryFallsBelowTheFloor() {
        say("The lid is shut, and the Mac stays awake. pmset takes 100 ms to take effect from now "
            "on.");
        change([](SimulatedMac& mac) {
            mac.lid = Lid::shut;
            mac.faults.lateness = 100;
        });
        say("The battery falls to 29 %, below the host's floor of 30 %.");
        change([](SimulatedMac& mac) { mac.battery = 29; });
        expectLog("sleep enabled again (battery)");
        expectHeld(false);
        require(!ask([this](const auto& answer) { host_->heartbeat(answer); }),
                "the next heartbeat is answered: no longer held");
        host_.reset();
        require(client_->waitForLine("refused: the battery is below the floor"),
                "the second client may not take over, and is told why");
        client_->signal(SIGINT);
        require(client_->waitForEnd() == 0, "it is stopped with Ctrl-C: sleep is enabled already");
        say("Why did the hold end? velmo-power knows.");
        const std::string folder = mac_.root().string();
        const auto status = start("velmo-power", {"--mac", folder}, "  > ");
        require(status->waitForLine("the battery fell below the floor"), "the status says why");
        say("The lid is opened.");
        change([](SimulatedMac& mac) {
            mac.lid = Lid::open;
            mac.faults.lateness = 0;
        });
    }

    void otherMacSleepsInItsBag() {
        say("And the third Mac, whose hold ended with the lid shut?");
        expectLog(shutDaemon_, "asking the Mac to sleep: its lid is shut");
        for (int i = 0; i < 2000 && !shutMac_.load()->asleep; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        require(shutMac_.load()->asleep, "the Mac is asleep in its bag");
        expectHeld(shutMac_, false);
    }

    void daemonIsKilledAndRecovers() {
        say("Back on mains power a client holds again, and the daemon is killed with SIGKILL.");
        change([](SimulatedMac& mac) { mac.mains = true; });
        client_ = startClient();
        expectHold(client_);
        daemon_->signal(SIGKILL);
        require(daemon_->waitForEnd() == 128 + SIGKILL, "the daemon is dead");
        require(client_->waitForLine("the power daemon went away"), "the client says so at once");
        expectHeld(true);
        say("The daemon starts again, as launchd would have it.");
        startDaemon();
        expectLog("a hold was left behind; sleep back");
        expectLog("sleep enabled again (recovered)");
        say("The client takes its hold again by itself.");
        expectHold(client_);
        expectHeld(true);
    }

    void clientIsKilled() {
        say("The client is killed with SIGKILL.");
        client_->signal(SIGKILL);
        expectLog("sleep enabled again (client gone)");
        expectHeld(false);
    }

    void clientReleases() {
        say("A client holds, and is stopped with Ctrl-C.");
        client_ = startClient();
        expectHold(client_);
        client_->signal(SIGINT);
        expectLog("sleep enabled again (released)");
        require(client_->waitForEnd() == 0, "the client ends with status 0");
        expectHeld(false);
    }

    void daemonIsToldToStop() {
        say("A client holds, and the daemon is told to stop (SIGTERM).");
        client_ = startClient();
        expectHold(client_);
        daemon_->signal(SIGTERM);
        expectLog("sleep enabled again (stopping)");
        require(daemon_->waitForEnd() == 0, "the daemon ends with status 0");
        expectHeld(false);
        client_.reset();
    }

    void daemonExitsWhenIdle() {
        say("And the daemon of the second Mac, where nobody has asked for anything?");
        require(idleDaemon_->waitForEnd() == 0, "the daemon has ended by itself with status 0");
        expectHeld(idleMac_, false);
    }

    fs::path programs_;
    MacFolder mac_;
    MacFolder idleMac_;
    MacFolder shutMac_;
    asio::io_context context_;
    std::shared_ptr<SocketClient> host_;
    Process daemon_;
    Process idleDaemon_;
    Process shutDaemon_;
    Process client_;
};

} // namespace

int main() {
    prepareProcess();
    std::string folder = (fs::temp_directory_path() / "velmo-life-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr)
        return EXIT_FAILURE;
    int status = EXIT_SUCCESS;
    try {
        Play(folder).run();
        say("All is as it was before the first hold.");
    } catch (const std::exception& error) {
        say(std::string("FAILED: ") + error.what());
        status = EXIT_FAILURE;
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    return status;
}
