#pragma once

#include "phone/PhonePower.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmo {

/// Reads this computer's power and keeps it awake, on a thread of its own: the connections of
/// platform/client run on another Asio than the bridge does.
class PowerDesk final : public PhonePower {
public:
    struct Services {
        /// Runs the work later on the bridge's thread. Called from any thread.
        std::function<void(std::function<void()> work)> post;
        /// Logs what a person can mend. Called from the desk's thread.
        std::function<void(std::string_view message)> log;
    };

    /// Reaches the simulated Mac in the folder, or this Mac if the folder is "". The error says why
    /// the simulated Mac can't be reached. Null if this computer is no Mac.
    static std::expected<std::unique_ptr<PowerDesk>, std::string> open(const std::string& folder,
                                                                       Services services);

    ~PowerDesk() override;
    PowerDesk(const PowerDesk&) = delete;
    PowerDesk& operator=(const PowerDesk&) = delete;

    void read(std::function<void(const Reading& reading)> done) override;
    void keep(BatteryFloor floor,
              std::function<void(const HoldKeeper::Status& status)> changed) override;
    void release() override;

private:
    class Desk;

    explicit PowerDesk(std::unique_ptr<Desk> desk);

    std::unique_ptr<Desk> desk_;
};

} // namespace velmo
