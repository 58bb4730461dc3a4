#pragma once

#include <memory>

namespace velmo {

/// Keeps an idle Mac from sleeping for as long as the returned object lives
/// (kIOPMAssertionTypePreventUserIdleSystemSleep, IOPMLib.h). Returns null if the system refuses.
std::shared_ptr<void> preventIdleSleep();

} // namespace velmo
