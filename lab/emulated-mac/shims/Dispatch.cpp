/// libdispatch (<dispatch/queue.h>, <dispatch/source.h>, <dispatch/time.h>).

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"
#include "lab/emulated-mac/shims/WorkQueue.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace velmo {

namespace {

struct Queue : Object {
    std::shared_ptr<WorkQueue> work = std::make_shared<WorkQueue>();
};

struct Source : Object {
    const void* type = nullptr;
    int signal = 0;
    Strong<Queue> target;
    Strong<Block> handler;
    std::chrono::nanoseconds delay{};
    std::chrono::nanoseconds period{};
    bool isResumed = false;
    std::atomic<bool> isOutstanding = false; ///< what fires meanwhile becomes one call
};

FrameworkClass queueClass("OS_dispatch_queue", &nsObject.object, sizeof(Queue),
                          {constructing<Queue>(), destructing<Queue>()});

FrameworkClass sourceClass("OS_dispatch_source", &nsObject.object, sizeof(Source),
                           {constructing<Source>(), destructing<Source>()});

/// A variable of the library's: the executable takes its address.
struct MainQueue : Queue {
    MainQueue() {
        isa = &queueClass.object;
        makeImmortal(this);
    }
};

MainQueue mainQueue;
char signalType;
char timerType;

Queue* makeQueue(const char* label, const void* attributes) {
    if (attributes != nullptr)
        endRun("a queue that is not serial");
    note(std::string("queue ") + label);
    return allocate<Queue>(queueClass);
}

void async(Queue* queue, Block* block) {
    Block* const copy = copyBlock(block);
    retain(queue);
    queue->work->async([queue, copy] {
        (*copy)();
        releaseBlock(copy);
        release(queue);
    });
}

void sync(Queue* queue, Block* block) {
    queue->work->sync([block] { (*block)(); });
}

/// Copies the block at once, and puts it on the queue when its time has come.
void after(std::uint64_t fromNow, Queue* queue, Block* block) {
    const auto due = std::chrono::steady_clock::now() + std::chrono::nanoseconds(fromNow);
    Block* const copy = copyBlock(block);
    retain(queue);
    std::thread([due, queue, copy] {
        std::this_thread::sleep_until(due);
        async(queue, copy);
        releaseBlock(copy);
        release(queue);
    }).detach();
}

/// Returns, with DISPATCH_TIME_NOW, nanoseconds from now by a clock that stops in sleep
/// (<dispatch/time.h>).
std::uint64_t timeFromNow(std::uint64_t when, std::int64_t nanoseconds) {
    if (when != 0)
        endRun("a time that is not told from now");
    return static_cast<std::uint64_t>(nanoseconds);
}

Source* makeSource(const void* type, std::uintptr_t handle, std::uintptr_t /*mask*/, Queue* queue) {
    if (queue == nullptr)
        endRun("a source on a queue of the system's");
    auto* const source = allocate<Source>(sourceClass);
    source->type = type;
    source->signal = static_cast<int>(handle);
    source->target.set(queue);
    return source;
}

void setHandler(Source* source, Block* handler) {
    source->handler.set(handler);
}

void setTimer(Source* source, std::uint64_t start, std::uint64_t period, std::uint64_t leeway) {
    source->delay = std::chrono::nanoseconds(start);
    source->period = std::chrono::nanoseconds(period);
    note("timer every " + std::to_string(period) + " ns, first after " + std::to_string(start)
         + " ns, leeway " + std::to_string(leeway) + " ns");
}

void fire(Source* source) {
    if (source->isOutstanding.exchange(true))
        return;
    source->target.get()->work->async([source] {
        source->isOutstanding = false;
        (*source->handler.get())();
    });
}

[[noreturn]] void runTimer(Source* source) {
    auto due = std::chrono::steady_clock::now() + source->delay;
    while (true) {
        std::this_thread::sleep_until(due);
        fire(source);
        due += source->period;
    }
}

/// Resumes a source, which begins suspended. The source is kept until it is cancelled, which the
/// executables never do.
void resume(Source* source) {
    if (source->isa != &sourceClass.object || source->isResumed)
        misuse("dispatch_resume of what is not suspended");
    if (source->handler.get() == nullptr)
        endRun("a source without a handler");
    source->isResumed = true;
    retain(source);
    if (source->type == &signalType) {
        note("signal " + std::to_string(source->signal) + " is watched");
        watchSignal(source->signal, [source] { fire(source); });
    } else {
        std::thread(runTimer, source).detach();
    }
}

/// Ends the main thread; another thread serves the main queue from here on. What the main thread
/// had autoreleased stays in its pools.
[[noreturn]] void park() {
    note("dispatch_main");
    while (true)
        ::pause();
}

constexpr auto shims = std::to_array<Shim>({
    {"__dispatch_main_q", address<&mainQueue>},
    {"__dispatch_source_type_signal", address<&signalType>},
    {"__dispatch_source_type_timer", address<&timerType>},
    {"_dispatch_after", address<after>},
    {"_dispatch_async", address<async>},
    {"_dispatch_main", address<park>},
    {"_dispatch_queue_create", address<makeQueue>},
    {"_dispatch_resume", address<resume>},
    {"_dispatch_source_create", address<makeSource>},
    {"_dispatch_source_set_event_handler", address<setHandler>},
    {"_dispatch_source_set_timer", address<setTimer>},
    {"_dispatch_sync", address<sync>},
    {"_dispatch_time", address<timeFromNow>},
});

} // namespace

Shims dispatchShims() {
    return shims;
}

} // namespace velmo
