#include "platform/daemon/macos/XpcService.h"

#include "lab/instruments/GuardedMac.h"
#include "platform/client/macos/PowerDaemonConnection.h"
#include "platform/daemon/macos/DispatchQueue.h"

#include <gmock/gmock.h>

#include <future>

namespace velmo {
namespace {

using testing::Contains;

/// A requirement that this test satisfies, whatever its code signature; only the text goes over a
/// real connection.
constexpr const char* anySignature = "anchor apple or !anchor apple";

/// Returns a context that delivers replies directly on the connection's queue.
ClientContext atOnce() {
    return {.post = [](const std::function<void()>& piece) { piece(); },
            .log = [](std::string_view message) { ADD_FAILURE() << message; }};
}

struct LabelledQueue final : SerialQueue {
    void async(Work work) override { queue.async(std::move(work)); }

    void sync(const Work& work) override { queue.sync(work); }

    DispatchQueue queue{"velmo.test"};
};

/// Service and clients in one process, over an anonymous listener. Objects that a late invalidation
/// may touch are never destroyed.
class XpcServiceTest : public testing::Test {
protected:
    using Client = std::shared_ptr<VelmoPowerProtocol>;

    Client connect() {
        return connectToPowerDaemonOver(
            [[NSXPCConnection alloc] initWithListenerEndpoint:listener.endpoint], anySignature,
            atOnce(), [] { ADD_FAILURE() << "lost"; });
    }

    static std::string hold(const Client& client) {
        std::promise<std::string> reply;
        client->hold(20, [&](bool ok, std::string_view reason) {
            reply.set_value((ok ? "yes " : "no ") + std::string(reason));
        });
        return reply.get_future().get();
    }

    template<class Call>
    static bool ask(const Client& client, Call call) {
        std::promise<bool> reply;
        ((*client).*call)([&](bool ok) { reply.set_value(ok); });
        return reply.get_future().get();
    }

    GuardedMacOn<LabelledQueue>& mac = *new GuardedMacOn<LabelledQueue>;
    NSXPCListener* listener = [NSXPCListener anonymousListener];
    XpcService service{listener, mac.newGuard(anySignature),
                       [](std::string_view message) { ADD_FAILURE() << message; }};
};

TEST_F(XpcServiceTest, EveryCallAndReplyGoesOver) {
    Client first = connect();
    Client second = connect();
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(ask(first, &VelmoPowerProtocol::heartbeat));
    EXPECT_EQ(hold(first), "yes ");
    EXPECT_EQ(hold(second), "no busy");
    EXPECT_TRUE(ask(first, &VelmoPowerProtocol::heartbeat));
    EXPECT_FALSE(ask(second, &VelmoPowerProtocol::heartbeat));
    EXPECT_TRUE(ask(second, &VelmoPowerProtocol::release));
    EXPECT_FALSE(ask(first, &VelmoPowerProtocol::heartbeat));
}

TEST_F(XpcServiceTest, EndsTheHoldOfAClientThatIsDestroyed) {
    Client first = connect();
    Client second = connect();
    EXPECT_EQ(hold(first), "yes ");
    first.reset();
    while (hold(second) == "no busy")
        continue;
    mac.queue.sync(
        [this] { EXPECT_THAT(mac.events, Contains("sleep enabled again (client gone)")); });
}

} // namespace
} // namespace velmo
