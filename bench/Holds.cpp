#include "bench/Suite.h"
#include "daemon/Session.h"
#include "lab/instruments/GuardedMac.h"

#include <memory>

namespace velmo::bench {

void addHolds(Suite& suite) {
    suite.grow({.what = "Session::hold by everybody, without a transport",
                .unit = "connections",
                .sizes = {8, 32, 128, 512}},
               [](benchmark::State& state) {
                   GuardedMac mac;
                   std::vector<std::shared_ptr<FakeConnection>> connections;
                   for (long i = 0; i < state.range(0); ++i) {
                       const auto id = static_cast<std::uint64_t>(i);
                       connections.push_back(std::make_shared<FakeConnection>(id, mac.events));
                       mac.guard->acceptConnection(connections.back(), Session::make);
                   }
                   for (auto _ : state) {
                       for (const auto& connection : connections)
                           connection->session->hold(20, [](bool, std::string_view) {});
                       mac.queue.runAll();
                       mac.events.clear();
                   }
               });
}

} // namespace velmo::bench
