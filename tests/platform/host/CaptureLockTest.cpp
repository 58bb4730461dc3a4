#include "platform/host/CaptureLock.h"

#include "lab/instruments/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velmo {
namespace {

namespace fs = std::filesystem;

class CaptureLockTest : public testing::Test {
protected:
    /// Tells whether the lock is free. The lock belongs to one object, so that another object can
    /// stand for another process.
    [[nodiscard]] bool isFree() const { return CaptureLock(path).tryLock(); }

    TemporaryFolder temporary;
    std::string path = (temporary.path() / "lock").string();
};

TEST_F(CaptureLockTest, BelongsToOneOwnerUntilReleased) {
    {
        CaptureLock lock(path);
        EXPECT_TRUE(lock.tryLock());
        EXPECT_TRUE(lock.tryLock());
        EXPECT_FALSE(isFree());
        lock.unlock();
        EXPECT_TRUE(isFree());
        EXPECT_TRUE(lock.tryLock());
    }
    EXPECT_TRUE(isFree());
    EXPECT_EQ(fs::status(path).permissions(), fs::perms{0600});
}

TEST_F(CaptureLockTest, WhatTheOwnerStartsDoesNotInheritIt) {
    const int next = ::dup(STDIN_FILENO); // the number that the lock's descriptor will get
    ::close(next);
    CaptureLock lock(path);
    ASSERT_TRUE(lock.tryLock());
    EXPECT_EQ(::fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(CaptureLockTest, LocksNothingButARegularFileOfThatName) {
    const fs::path other = temporary.path() / "other";
    fs::create_symlink(other, path);
    EXPECT_FALSE(isFree());
    EXPECT_FALSE(fs::exists(other));
    fs::remove(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(isFree());
}

} // namespace
} // namespace velmo
