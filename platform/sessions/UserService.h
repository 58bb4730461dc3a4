#pragma once

#include "sessions/ServiceJob.h"

namespace velmo {

/// Returns the job for this system's manager of services: launchd on a Mac, systemd elsewhere.
ServiceJob userServiceJob(const ServiceFacts& facts);

} // namespace velmo
