#include "daemon/Session.h"
#include "lab/instruments/GuardedMac.h"
#include "platform/daemon/simulated/ThreadQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace velmo {
namespace {

using testing::ElementsAre;

class GuardOnThreads : public testing::Test, protected GuardedMacOn<ThreadQueue> {
protected:
    /// Makes four clients call at once, each on a thread of its own and with a tick in between.
    void run(const std::function<void(FakeConnection&)>& atTheEnd) {
        std::vector<std::thread> clients;
        for (std::uint64_t id = 1; id <= 4; ++id) {
            const auto connection = std::make_shared<FakeConnection>(id, events);
            ASSERT_TRUE(guard->acceptConnection(connection, Session::make));
            connections.push_back(connection);
        }
        for (const auto& connection : connections)
            clients.emplace_back([&, &session = *connection->session] {
                for (int i = 0; i < calls; ++i) {
                    session.hold(20, [this](bool, std::string_view) { ++replies; });
                    session.heartbeat([this](bool) { ++replies; });
                    guard->tick();
                    session.report([this](const auto&) { ++replies; });
                    session.release([this](bool) { ++replies; });
                }
                session.hold(20, [](bool, std::string_view) {});
                atTheEnd(*connection);
            });
        for (std::thread& client : clients)
            client.join();
        queue.sync([] {});
        EXPECT_EQ(replies, 4 * calls * 4);
        EXPECT_FALSE(machine.sleepDisabled);
        EXPECT_FALSE(records.record);
    }

    static constexpr int calls = 100;
    std::vector<std::shared_ptr<FakeConnection>> connections;
    std::atomic<int> replies = 0;
};

TEST_F(GuardOnThreads, EnablesSleepWhenTheLastClientIsGone) {
    run([](FakeConnection& connection) { connection.invalidate(); });
    EXPECT_EQ(guard->state().connections, 0);
}

TEST_F(GuardOnThreads, NoHoldOfAnyThreadOutlivesTheEnd) {
    run([this](FakeConnection& connection) {
        if (connection.id() == ClientId{1})
            guard->stop();
    });
    EXPECT_THAT(exits, ElementsAre(0));
}

} // namespace
} // namespace velmo
