#include "platform/sessions/WatchedDescriptor.h"

#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace velmo {
namespace {

/// Tells whether this process has asked the system to be woken when a descriptor can be written to.
bool asksForRoom() {
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream info(descriptor.path());
        // tfd:        7 events: 8000201f data: ...
        for (std::string line; std::getline(info, line);) {
            constexpr std::string_view label = "events:";
            const std::size_t events = line.find(label);
            if (line.starts_with("tfd:")
                && (std::stoul(line.substr(events + label.size()), nullptr, 16) & EPOLLOUT) != 0)
                return true;
        }
    }
    return false;
}

class WatchedDescriptorTest : public testing::Test {
protected:
    WatchedDescriptorTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);
        peer_ = Descriptor(ends[1]);
        watched_ = WatchedDescriptor::make(
            context_, Descriptor(ends[0]),
            [this] {
                ++readable_;
                takeAll(watched_->get());
            },
            [this] {
                ++writable_;
                watched_->watch(true, wantsMore_);
            });
        watched_->watch(true, false);
    }

    /// Reads until nothing is left and returns the result of the last read: 0 at the end of the
    /// stream.
    static ssize_t takeAll(int socket) {
        std::array<char, 4096> room{};
        ssize_t count = 0;
        while ((count = ::read(socket, room.data(), room.size())) > 0) {
        }
        return count;
    }

    void fill() {
        const std::array<char, 4096> piece{};
        while (::write(watched_->get(), piece.data(), piece.size()) > 0) {
        }
    }

    void settle() {
        context_.restart();
        context_.poll();
    }

    asio::io_context context_{1};
    Descriptor peer_;
    std::shared_ptr<WatchedDescriptor> watched_;
    int readable_ = 0;
    int writable_ = 0;
    bool wantsMore_ = false;
};

TEST_F(WatchedDescriptorTest, DoesNotWakeForRoomThatIsNotWanted) {
    for (int time = 1; time <= 2; ++time) {
        fill();
        watched_->watch(true, true);
        settle();
        EXPECT_EQ(writable_, time - 1);
        EXPECT_TRUE(asksForRoom());

        takeAll(peer_.get());
        settle();
        EXPECT_EQ(writable_, time);
        EXPECT_FALSE(asksForRoom());

        ASSERT_EQ(::write(peer_.get(), "k", 1), 1);
        settle();
        EXPECT_EQ(readable_, time);
    }
}

TEST_F(WatchedDescriptorTest, RoomIsToldAsLongAsItIsWanted) {
    fill();
    wantsMore_ = true;
    watched_->watch(true, true);
    takeAll(peer_.get());
    context_.restart();
    while (writable_ < 3)
        context_.run_one();
    watched_->watch(true, false);
    settle();
    EXPECT_EQ(writable_, 3);
    EXPECT_FALSE(asksForRoom());
}

TEST_F(WatchedDescriptorTest, IsQuietOnceClosed) {
    fill();
    watched_->watch(true, true);
    watched_->close();
    EXPECT_EQ(takeAll(peer_.get()), 0) << "something is open still";
    settle();
    EXPECT_EQ(readable_ + writable_, 0);
}

} // namespace
} // namespace velmo
