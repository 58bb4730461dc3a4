#include "daemon/ConnectionPlaces.h"

#include <gmock/gmock.h>

#include <vector>

namespace velmo {
namespace {

using testing::ElementsAre;

class ConnectionPlacesTest : public testing::Test {
protected:
    bool take(std::uint64_t client, std::uint32_t user = 501) {
        return places.take(ClientId{client}, UserId{user}, [this, client] {
            dropped.push_back(client);
            places.leave(ClientId{client}); // as an invalidation does, maybe at once
        });
    }

    ConnectionPlaces places{3};
    std::vector<std::uint64_t> dropped;
};

TEST_F(ConnectionPlacesTest, DropsTheOldestSilentConnectionWhenFull) {
    for (std::uint64_t client = 1; client <= 5; ++client)
        EXPECT_TRUE(take(client));
    EXPECT_THAT(dropped, ElementsAre(1, 2));
    places.admitted(ClientId{3});
    places.admitted(ClientId{1}); // gone already
    EXPECT_TRUE(take(6));
    EXPECT_THAT(dropped, ElementsAre(1, 2, 4));
    places.admitted(ClientId{5});
    places.admitted(ClientId{6});
    EXPECT_FALSE(take(7));
    EXPECT_TRUE(take(8, 502)) << "another user has places of its own";
    EXPECT_FALSE(take(9));
    places.leave(ClientId{3});
    EXPECT_TRUE(take(10));
    EXPECT_THAT(dropped, ElementsAre(1, 2, 4));
}

TEST_F(ConnectionPlacesTest, KeepsAdmittedConnectionsUnderAFloodOfSilentOnes) {
    ConnectionPlaces all;
    for (std::uint64_t client = 1; client <= 400; ++client) {
        ASSERT_TRUE(all.take(ClientId{client}, UserId{501}, [] { FAIL(); }));
        all.admitted(ClientId{client});
    }
    std::size_t open = 0;
    for (std::uint64_t client = 401; client <= 5000; ++client, ++open)
        ASSERT_TRUE(all.take(ClientId{client}, UserId{501}, [&] { --open; }));
    EXPECT_EQ(open, ConnectionPlaces::maxPerUser - 400);
}

} // namespace
} // namespace velmo
