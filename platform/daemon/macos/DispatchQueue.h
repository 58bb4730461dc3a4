#pragma once

#include "daemon/SerialQueue.h"

#include <dispatch/dispatch.h>

namespace velmo {

/// A serial Dispatch queue without a quality of service of its own.
class DispatchQueue final : public SerialQueue {
public:
    explicit DispatchQueue(const char* label);

    void async(Work work) override;
    void sync(const Work& work) override;

private:
    dispatch_queue_t queue_;
};

} // namespace velmo
