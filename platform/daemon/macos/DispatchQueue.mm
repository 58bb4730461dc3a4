#include "platform/daemon/macos/DispatchQueue.h"

#include <utility>

namespace velmo {

DispatchQueue::DispatchQueue(const char* label)
    : queue_(dispatch_queue_create(label, DISPATCH_QUEUE_SERIAL)) {
}

void DispatchQueue::async(Work work) {
    dispatch_async(queue_, ^{
      @autoreleasepool {
          work();
      }
    });
}

void DispatchQueue::sync(const Work& work) {
    // A pointer, because the block would copy the work itself. The work lives for as long as the
    // call waits.
    const Work* const borrowed = &work;
    dispatch_sync(queue_, ^{
      @autoreleasepool {
          (*borrowed)();
      }
    });
}

} // namespace velmo
