#pragma once

#include <memory>

namespace velmo {

/// Keeps an idle Mac from sleeping for as long as what it returns lives
/// (kIOPMAssertionTypePreventUserIdleSystemSleep, IOPMLib.h); null where the system refuses.
std::shared_ptr<void> preventIdleSleep();

} // namespace velmo
