/// libSystem's threads and clocks (<pthread.h>, <time.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <vector>

namespace velmo {

namespace {

// A mutex or condition variable of Darwin's is a signature and some room, too little for one of
// this system's: a pointer to the native one is kept in the first word of the room. An object that
// a constant initialised gets its native one at its first use (libpthread's pthread_impl.h).

struct Opaque {
    std::int64_t signature;
    void* native;
};

std::mutex makingNative; // NOLINT: constant-initialised

pthread_mutex_t* nativeMutex(Opaque* mutex) {
    const std::lock_guard lock(makingNative);
    if (mutex->native == nullptr)
        mutex->native = new pthread_mutex_t(PTHREAD_MUTEX_INITIALIZER);
    return static_cast<pthread_mutex_t*>(mutex->native);
}

pthread_cond_t* nativeCondition(Opaque* condition) {
    const std::lock_guard lock(makingNative);
    if (condition->native == nullptr)
        condition->native = new pthread_cond_t(PTHREAD_COND_INITIALIZER);
    return static_cast<pthread_cond_t*>(condition->native);
}

int initMutex(Opaque* mutex, const void* attributes) {
    if (attributes != nullptr)
        endRun("a mutex with attributes");
    mutex->native = nullptr;
    return 0;
}

int lockMutex(Opaque* mutex) {
    return darwinErrorOf(::pthread_mutex_lock(nativeMutex(mutex)));
}

int unlockMutex(Opaque* mutex) {
    return darwinErrorOf(::pthread_mutex_unlock(nativeMutex(mutex)));
}

int destroyMutex(Opaque* mutex) {
    delete static_cast<pthread_mutex_t*>(mutex->native);
    mutex->native = nullptr;
    return 0;
}

int initCondition(Opaque* condition, const void* /*attributes*/) {
    condition->native = nullptr;
    return 0;
}

int waitForCondition(Opaque* condition, Opaque* mutex) {
    return darwinErrorOf(::pthread_cond_wait(nativeCondition(condition), nativeMutex(mutex)));
}

int waitForConditionUntil(Opaque* condition, Opaque* mutex, const timespec* time) {
    return darwinErrorOf(
        ::pthread_cond_timedwait(nativeCondition(condition), nativeMutex(mutex), time));
}

int signalCondition(Opaque* condition) {
    return darwinErrorOf(::pthread_cond_signal(nativeCondition(condition)));
}

int broadcastCondition(Opaque* condition) {
    return darwinErrorOf(::pthread_cond_broadcast(nativeCondition(condition)));
}

int destroyCondition(Opaque* condition) {
    delete static_cast<pthread_cond_t*>(condition->native);
    condition->native = nullptr;
    return 0;
}

struct Once {
    std::int64_t state;
};

constexpr std::int64_t onceDone = 0x4F4E4345;

int once(Once* control, void (*function)()) {
    static std::recursive_mutex mutex;
    const std::lock_guard lock(mutex);
    if (control->state != onceDone) {
        function();
        control->state = onceDone;
    }
    return 0;
}

int makeKey(std::uint64_t* key, void (*destructor)(void*)) {
    pthread_key_t made{};
    const int error = ::pthread_key_create(&made, destructor);
    *key = made;
    return darwinErrorOf(error);
}

int deleteKey(std::uint64_t key) {
    return darwinErrorOf(::pthread_key_delete(static_cast<pthread_key_t>(key)));
}

void* valueOf(std::uint64_t key) {
    return ::pthread_getspecific(static_cast<pthread_key_t>(key));
}

int setValue(std::uint64_t key, const void* value) {
    return darwinErrorOf(::pthread_setspecific(static_cast<pthread_key_t>(key), value));
}

/// The destructors of the executable's thread-locals, called when their thread ends, last first
/// (dyld's threadLocalVariables.c).
class ThreadEnd {
public:
    ThreadEnd() = default;

    ~ThreadEnd() {
        while (!calls_.empty()) {
            const auto [function, argument] = calls_.back();
            calls_.pop_back();
            function(argument);
        }
    }

    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;

    void call(void (*function)(void*), void* argument) { calls_.push_back({function, argument}); }

private:
    struct Call {
        void (*function)(void*);
        void* argument;
    };

    std::vector<Call> calls_;
};

void atThreadEnd(void (*function)(void*), void* argument) {
    thread_local ThreadEnd end;
    end.call(function, argument);
}

int makeThread(pthread_t* thread, const void* attributes, void* (*function)(void*),
               void* argument) {
    if (attributes != nullptr)
        endRun("a thread with attributes");
    return darwinErrorOf(::pthread_create(thread, nullptr, function, argument));
}

std::uint32_t threadNumber(pthread_t /*thread*/) {
    return static_cast<std::uint32_t>(::gettid());
}

/// Darwin's <time.h>. The seconds of EMULATED_MAC's fact "elapsed" are added to every clock but the
/// date's.
enum DarwinClock { realTime = 0, monotonicRaw = 4, monotonic = 6, uptimeRaw = 8 };

int readClock(int clock, timespec* time) {
    switch (clock) {
    case realTime:
        return keepError(::clock_gettime(CLOCK_REALTIME, time));
    case monotonicRaw:
    case monotonic:
    case uptimeRaw: {
        const int result = keepError(::clock_gettime(CLOCK_MONOTONIC, time));
        time->tv_sec += factOr("elapsed", 0);
        return result;
    }
    default:
        endRun("a clock that has no case");
    }
}

struct DarwinTimeval {
    std::int64_t seconds;
    std::int32_t microseconds;
};

int timeOfDay(DarwinTimeval* time, void* /*zone*/) {
    timeval now{};
    const int result = keepError(::gettimeofday(&now, nullptr));
    *time = {.seconds = now.tv_sec, .microseconds = static_cast<std::int32_t>(now.tv_usec)};
    return result;
}

constexpr auto shims = std::to_array<Shim>({
    {"__tlv_atexit", address<atThreadEnd>},
    {"_clock_gettime", address<readClock>},
    {"_gettimeofday", address<timeOfDay>},
    {"_localtime_r", address<::localtime_r>}, // the same struct
    {"_mktime", address<::mktime>},
    {"_nanosleep", address<Translated<::nanosleep>::call>},
    {"_pthread_cond_broadcast", address<broadcastCondition>},
    {"_pthread_cond_destroy", address<destroyCondition>},
    {"_pthread_cond_init", address<initCondition>},
    {"_pthread_cond_signal", address<signalCondition>},
    {"_pthread_cond_timedwait", address<waitForConditionUntil>},
    {"_pthread_cond_wait", address<waitForCondition>},
    {"_pthread_create", address<makeThread>},
    {"_pthread_detach", address<::pthread_detach>},
    {"_pthread_getspecific", address<valueOf>},
    {"_pthread_join", address<::pthread_join>},
    {"_pthread_key_create", address<makeKey>},
    {"_pthread_key_delete", address<deleteKey>},
    {"_pthread_mach_thread_np", address<threadNumber>},
    {"_pthread_mutex_destroy", address<destroyMutex>},
    {"_pthread_mutex_init", address<initMutex>},
    {"_pthread_mutex_lock", address<lockMutex>},
    {"_pthread_mutex_unlock", address<unlockMutex>},
    {"_pthread_once", address<once>},
    {"_pthread_self", address<::pthread_self>},
    {"_pthread_setspecific", address<setValue>},
});

} // namespace

Shims systemThreadShims() {
    return shims;
}

} // namespace velmo
