#include "platform/phone/PowerDesk.h"

#include "machine/PowerReadings.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/simulated/SimulatedAccess.h"
#include "platform/posix/Clocks.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace velmo {

namespace {

constexpr double reportPatience = 5;  // seconds for the daemon's report
constexpr double releasePatience = 3; // seconds for the daemon to take a release at the end

/// Asks the daemon for its report, once.
struct Question {
    asio::io_context& context;
    std::function<void(std::optional<HoldReport>)> done;
    std::shared_ptr<VelmoPowerProtocol> daemon{};

    void answer(const std::optional<HoldReport>& report) {
        if (const auto tell = std::exchange(done, nullptr))
            tell(report);
        // Later, since the connection itself may be calling.
        asio::post(context, [released = std::move(daemon)] {});
    }
};

} // namespace

/// Everything here but `open`, `start` and `end` happens on the desk's thread.
class PowerDesk::Desk {
public:
    explicit Desk(Services services) : services_(std::move(services)) {}

    std::expected<bool, std::string> open(const std::string& folder) {
        if (!folder.empty()) {
            auto mac = accessSimulatedMac(context_, folder);
            if (!mac)
                return std::unexpected(mac.error());
            mac_ = *std::move(mac);
            return true;
        }
        mac_ = accessThisMac(
            {.post = [this](std::function<void()> work) { asio::post(context_, std::move(work)); },
             .log = services_.log});
        return mac_.has_value();
    }

    void start() {
        thread_ = std::thread([this] { context_.run(); });
    }

    /// Releases the hold, and ends the thread.
    void end() {
        std::promise<void> released;
        asio::post(context_, [&] { release([&] { released.set_value(); }); });
        released.get_future().wait_for(Clocks::duration(releasePatience));
        context_.stop();
        thread_.join();
    }

    void post(std::function<void()> work) { asio::post(context_, std::move(work)); }

    void read(std::function<void(const Reading& reading)> done) {
        const PowerReading power = readPower(*mac_->machine);
        ask([this, power, done = std::move(done)](std::optional<HoldReport> report) {
            services_.post(
                [done, reading = Reading{.battery = power.battery,
                                         .mains = power.ac,
                                         .report = std::move(report)}] { done(reading); });
        });
    }

    void keep(BatteryFloor floor, std::function<void(const HoldKeeper::Status& status)> changed) {
        const auto report = [this, changed = std::move(changed)](const HoldKeeper::Status& status) {
            services_.post([changed, status] { changed(status); });
        };
        keeper_.emplace(
            *mac_->link,
            [this](double seconds, std::function<void()> work) { after(seconds, std::move(work)); },
            report, HoldKeeper::Options{.batteryFloor = floor});
        ++keepers_;
        keeper_->start();
    }

    void release(std::function<void()> done) {
        if (!keeper_)
            return done();
        keeper_->stop([this, done = std::move(done)](HoldKeeper::Outcome /*outcome*/) {
            // The keeper must not go in its own callback, nor a newer one in its place.
            asio::post(context_, [this, done, number = keepers_] {
                if (number == keepers_)
                    keeper_.reset();
                done();
            });
        });
    }

private:
    void after(double seconds, std::function<void()> work) {
        const auto timer =
            std::make_shared<asio::steady_timer>(context_, Clocks::duration(seconds));
        timer->async_wait([timer, work = std::move(work)](const std::error_code& aborted) {
            if (!aborted)
                work();
        });
    }

    void ask(std::function<void(std::optional<HoldReport>)> done) {
        const auto question =
            std::shared_ptr<Question>(new Question{.context = context_, .done = std::move(done)});
        question->daemon =
            mac_->link->connect([question](PowerLink::Loss) { question->answer(std::nullopt); });
        if (!question->daemon)
            return question->answer(std::nullopt);
        after(reportPatience, [question] { question->answer(std::nullopt); });
        question->daemon->report(
            [question](const std::optional<HoldReport>& report) { question->answer(report); });
    }

    Services services_;
    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> stays_ =
        asio::make_work_guard(context_);
    std::optional<PowerAccess> mac_;
    std::optional<HoldKeeper> keeper_;
    int keepers_ = 0; ///< made so far
    std::thread thread_;
};

std::expected<std::unique_ptr<PowerDesk>, std::string> PowerDesk::open(const std::string& folder,
                                                                       Services services) {
    auto desk = std::make_unique<Desk>(std::move(services));
    const auto found = desk->open(folder);
    if (!found)
        return std::unexpected(found.error());
    if (!*found)
        return nullptr;
    desk->start();
    return std::unique_ptr<PowerDesk>(new PowerDesk(std::move(desk)));
}

PowerDesk::PowerDesk(std::unique_ptr<Desk> desk) : desk_(std::move(desk)) {
}

PowerDesk::~PowerDesk() {
    desk_->end();
}

void PowerDesk::read(std::function<void(const Reading& reading)> done) {
    desk_->post([this, done = std::move(done)] { desk_->read(done); });
}

void PowerDesk::keep(BatteryFloor floor,
                     std::function<void(const HoldKeeper::Status& status)> changed) {
    desk_->post([this, floor, changed = std::move(changed)] { desk_->keep(floor, changed); });
}

void PowerDesk::release() {
    desk_->post([this] { desk_->release([] {}); });
}

} // namespace velmo
