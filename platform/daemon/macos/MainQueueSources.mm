#include "platform/daemon/macos/MainQueueSources.h"

#include <csignal>
#include <cstdint>

namespace velmo {

namespace {

void start(dispatch_source_t source, std::function<void()> handler) {
    dispatch_source_set_event_handler(source, ^{
      @autoreleasepool {
          handler();
      }
    });
    dispatch_resume(source);
}

} // namespace

dispatch_source_t repeatOnMainQueue(double seconds, std::function<void()> handler) {
    const auto period = static_cast<std::int64_t>(seconds * double{NSEC_PER_SEC});
    const dispatch_source_t source =
        dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
    dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, period),
                              static_cast<std::uint64_t>(period), 0);
    start(source, std::move(handler));
    return source;
}

dispatch_source_t signalOnMainQueue(int signal, std::function<void()> handler) {
    // A source does not replace the signal's disposition, which would still end the process.
    static_cast<void>(std::signal(signal, SIG_IGN));
    const dispatch_source_t source =
        dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<std::uintptr_t>(signal), 0,
                               dispatch_get_main_queue());
    start(source, std::move(handler));
    return source;
}

} // namespace velmo
