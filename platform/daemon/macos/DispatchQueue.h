#pragma once

#include "daemon/SerialQueue.h"

#include <dispatch/dispatch.h>

namespace velmo {

/// A serial Dispatch queue. No quality of service is set for it.
class DispatchQueue final : public SerialQueue {
public:
    /// The label shows in debuggers and crash reports.
    explicit DispatchQueue(const char* label);

    void async(Work work) override;
    void sync(const Work& work) override;

private:
    dispatch_queue_t queue_;
};

} // namespace velmo
