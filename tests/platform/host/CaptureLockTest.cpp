#include "platform/host/CaptureLock.h"

#include "platform/posix/Pipe.h"

#include "lab/instruments/TemporaryFolder.h"
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>

namespace velmo {
namespace {

namespace fs = std::filesystem;

class CaptureLockTest : public testing::Test {
protected:
    [[nodiscard]] bool isFree() const { return CaptureLock(path).tryLock(); }

    TemporaryFolder temporary;
    std::string path = (temporary.path() / "lock").string();
};

/// A process that takes the lock, if it can, and then waits to be killed.
class Contender {
public:
    explicit Contender(const std::string& path) : pid_(::fork()) {
        char answer = 0;
        if (pid_ == 0) {
            CaptureLock lock(path);
            answer = lock.tryLock() ? 'y' : 'n';
            while (::write(pipe_.writeEnd.get(), &answer, 1) == 1)
                ::pause();
        }
        pipe_.writeEnd.reset();
        hasLock = ::read(pipe_.readEnd.get(), &answer, 1) == 1 && answer == 'y';
    }

    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;

    ~Contender() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }

    bool hasLock = false;

private:
    Pipe pipe_ = makePipe().value();
    pid_t pid_;
};

TEST_F(CaptureLockTest, OneProcessHasItUntilItDies) {
    {
        const Contender first(path);
        EXPECT_TRUE(first.hasLock);
        EXPECT_FALSE(isFree());
        EXPECT_FALSE(Contender(path).hasLock);
    }
    CaptureLock lock(path);
    EXPECT_TRUE(lock.tryLock());
    EXPECT_TRUE(lock.tryLock()); // it has it already
    EXPECT_FALSE(Contender(path).hasLock);
    lock.unlock();
    EXPECT_TRUE(Contender(path).hasLock);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(CaptureLockTest, WhatTheHolderStartsDoesNotInheritIt) {
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
    fs::remove(path);
    fs::create_directory(path);
    EXPECT_FALSE(isFree());
    EXPECT_FALSE(CaptureLock(path + "/no/folder").tryLock());
    fs::remove(path);
    EXPECT_TRUE(isFree());
}

} // namespace
} // namespace velmo
