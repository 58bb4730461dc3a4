/// Keeps a Mac awake for a second: keep-awake [FOLDER]. The Mac is this one, or the simulated one
/// in the folder, which is started with its daemon as the README tells.

#include "client/HoldKeeper.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/simulated/SimulatedAccess.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <iostream>

using namespace velmo;

namespace {

const BatteryFloor batteryFloor(20); // percent

/// Returns a timer that calls back on the loop's thread, where keeper and link live too.
HoldKeeper::Timer timerOn(asio::io_context& loop) {
    return [&loop](double seconds, std::function<void()> callback) {
        const auto timer = std::make_shared<asio::steady_timer>(
            loop, std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000)));
        timer->async_wait([timer, callback = std::move(callback)](const std::error_code& error) {
            if (!error)
                callback();
        });
    };
}

/// Returns the Mac in the folder, or this Mac without a folder. The error says why that failed.
std::expected<PowerAccess, std::string> access(asio::io_context& loop, const char* folder) {
    if (folder != nullptr)
        return accessSimulatedMac(loop, folder);
    auto mac = accessThisMac(
        {.post = [&loop](std::function<void()> work) { asio::post(loop, std::move(work)); },
         .log = [](std::string_view message) { std::cerr << message << '\n'; }});
    if (!mac)
        return std::unexpected("this is no Mac");
    return *std::move(mac);
}

} // namespace

int main(int count, char** arguments) {
    asio::io_context loop;
    const auto stayAwake = asio::make_work_guard(loop);
    const auto mac = access(loop, count > 1 ? arguments[1] : nullptr);
    if (!mac) {
        std::cerr << mac.error() << '\n';
        return 1;
    }

    const auto timer = timerOn(loop);
    std::optional<HoldKeeper> keeper;
    const auto stop = [&] {
        keeper->stop([&](HoldKeeper::Outcome outcome) {
            const bool restored = outcome == HoldKeeper::Outcome::restored;
            std::cout << (restored ? "sleep is as before" : "not known to be as before") << '\n';
            loop.stop();
        });
    };
    const auto report = [&](const HoldKeeper::Status& status) {
        if (status.state == HoldKeeper::State::refused)
            std::cout << "refused: " << status.reason << '\n';
        else if (!status.reason.empty() && status.state != HoldKeeper::State::unreachable)
            std::cout << "ended: " << status.reason << '\n';
        if (status.state != HoldKeeper::State::holding)
            return; // the keeper asks again by itself, but after "released by another"
        std::cout << "holding\n";
        timer(1, stop);
    };
    keeper.emplace(*mac->link, timer, report, HoldKeeper::Options{.batteryFloor = batteryFloor});
    keeper->start();
    loop.run();
}
