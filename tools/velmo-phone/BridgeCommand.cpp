#include "tools/velmo-phone/BridgeCommand.h"

#include "phone/AwakeSwitch.h"
#include "phone/PhoneBridge.h"
#include "phone/PhoneCommands.h"
#include "platform/phone/CommandDoor.h"
#include "platform/phone/HostStart.h"
#include "platform/phone/HttpDoors.h"
#include "platform/phone/PhoneFolder.h"
#include "platform/phone/PowerDesk.h"
#include "platform/phone/SessionSockets.h"
#include "platform/phone/Sha256.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "platform/sessions/SystemRandom.h"
#include "tools/velmo-phone/PageFiles.h"
#include "tools/velmo-phone/PhoneExit.h"
#include "tools/velmo-phone/QrText.h"
#include "tools/velmo-session/SessionStart.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <unistd.h>

#include <utility>

namespace velmo {

namespace {

/// Returns the call that starts what a page asks for, in the environment of this process.
SessionCallLine startCall(const PhoneCallLine& wanted) {
    const PtyFrame::Size size{.cols = static_cast<int>(wanted.cols.value_or(0)),
                              .rows = static_cast<int>(wanted.rows.value_or(0))};
    const std::string home = SessionStart::home();
    std::string folder = wanted.folder.value_or("");
    if (folder == "~" || folder.starts_with("~/"))
        folder.replace(0, 1, home);
    // An empty word can't name a program.
    auto command = SessionStart::commandOf(wanted.words.value_or(std::vector<std::string>()));
    return {.call = SessionCall::start,
            .name = wanted.name,
            .words = SessionStart::wordsOf(folder.empty() ? home : folder, size, command),
            .environment = SessionStart::environmentToSend()};
}

/// Starts a session host by the velmo-session beside this program.
void startHost() {
    startSessionHost((ownExecutable().parent_path() / "velmo-session").string());
}

class Server {
public:
    Server(PhoneFolder folder, Descriptor right, PhoneRecord record)
        : folder_(std::move(folder)),
          right_(std::move(right)),
          record_(std::move(record)),
          sessions_(context_, {.startCall = startCall, .startHost = startHost}),
          doors_(context_),
          commands_(context_, [this](std::string_view line) { return obey(*bridge_, line); }),
          stop_(context_) {
        for (const int signal : endingSignals())
            stop_.add(signal);
    }

    int run(const std::string& mac) {
        auto power = PowerDesk::open(mac, powerServices());
        if (!power)
            return phoneComplains(power.error(), PhoneExit::refused);
        power_ = *std::move(power);
        if (power_)
            awake_.emplace(awakeServices());
        const auto port = doors_.take(record_.port);
        if (!port)
            return phoneComplains("port " + std::to_string(record_.port)
                                      + " is taken by another program; name another by --port",
                                  PhoneExit::refused);
        record_.port = *port;
        if (!folder_.write(record_))
            return phoneComplains(folder_.path() + " can't be written to", PhoneExit::refused);
        bridge_.emplace(services(), record_);
        const auto socket = PhoneFolder::commandSocketPath();
        if (!socket || !commands_.open(*socket))
            return phoneComplains(folder_.path() + " has a path too long for a socket, or is full",
                                  PhoneExit::refused);
        doors_.serve(*bridge_);
        greet();
        stop_.async_wait([this](const boost::system::error_code& aborted, int /*signal*/) {
            if (!aborted)
                context_.stop();
        });
        context_.run();
        ::unlink(socket->c_str());
        bridge_->closePages();
        context_.restart();
        context_.poll(); // which sends the pages their last frames
        return PhoneExit::success;
    }

private:
    PhoneBridge::Services services() {
        return {.sessions = sessions_,
                .awake = awake_ ? &*awake_ : nullptr,
                .files = pageFiles(),
                .random = fillWithRandomBytes,
                .hash = sha256,
                .steadyTime = Clocks::steadyTime,
                .wallTime = Clocks::wallTime,
                .save = [this](const PhoneRecord& record) {
                    const bool isWritten = folder_.write(record);
                    if (!isWritten)
                        phoneComplains("the devices can't be written down; " + folder_.path()
                                           + " can't be written to",
                                       PhoneExit::refused);
                    return isWritten;
                }};
    }

    PowerDesk::Services powerServices() {
        return {
            .post =
                [this](std::function<void()> work) {
                    boost::asio::post(context_, std::move(work));
                },
            .log = [](std::string_view message) { phoneComplains(message, PhoneExit::success); }};
    }

    AwakeSwitch::Services awakeServices() {
        return {.sessions = sessions_,
                .power = *power_,
                .wallTime = Clocks::wallTime,
                .after =
                    [this](double seconds, std::function<void()> work) {
                        const auto timer = std::make_shared<boost::asio::steady_timer>(
                            context_, Clocks::duration(seconds));
                        timer->async_wait([timer, work = std::move(work)](
                                              const boost::system::error_code& aborted) {
                            if (!aborted)
                                work();
                        });
                    },
                .changed =
                    [this] {
                        if (bridge_)
                            bridge_->powerChanged();
                    }};
    }

    /// Whatever standard output is: `velmo-phone admit` prints another address.
    void greet() {
        static_cast<void>(printAddress(bridge_->admit(DeviceRights::use)));
        if (!record_.outside)
            writeStandardOutput("Only this computer reaches this address. A phone needs one from "
                                "outside: see --url.\n");
    }

    boost::asio::io_context context_{1};
    PhoneFolder folder_;
    Descriptor right_; ///< the lock that gives the right to serve
    PhoneRecord record_;
    SessionSockets sessions_;
    std::unique_ptr<PowerDesk> power_; ///< null if this computer is no Mac
    std::optional<AwakeSwitch> awake_; ///< likewise
    std::optional<PhoneBridge> bridge_;
    HttpDoors doors_;
    CommandDoor commands_;
    boost::asio::signal_set stop_;
};

} // namespace

int serveBridge(const BridgeRequest& request) {
    auto folder = PhoneFolder::make();
    if (!folder)
        return phoneComplains(folder.error(), PhoneExit::refused);
    auto right = folder->lock();
    if (!right)
        return phoneComplains(right.error(), PhoneExit::refused);
    auto record = folder->read();
    if (!record)
        return phoneComplains(folder->path() + "/" + PhoneFolder::recordFile
                                  + " can't be read; remove it to begin anew",
                              PhoneExit::refused);
    record->port = request.port.value_or(record->port);
    if (request.outside)
        record->outside = request.outside->empty() ? std::nullopt : request.outside;
    return Server(*std::move(folder), *std::move(right), *std::move(record)).run(request.mac);
}

int printAddress(const std::string& address) {
    const bool isTerminal = ::isatty(STDOUT_FILENO) != 0;
    return phonePrints((isTerminal ? qrText(address).value_or("") : "") + address + "\n");
}

} // namespace velmo
