#pragma once

#include <string_view>

/// What an emulated process says about itself: notes on its standard error, among the program's own
/// output.
namespace velmo {

/// The emulator's own exit statuses. The programs use other ones.
namespace EmulatorStatus {
inline constexpr int unusable = 96; ///< the executable can't be loaded, or lacks a shim
inline constexpr int misused = 97;  ///< the program did what the real system would crash for
} // namespace EmulatorStatus

/// Writes one line of the transcript.
void note(std::string_view text);

/// Names what lacks a shim, and ends the process.
[[noreturn]] void endRun(std::string_view text);

/// Names what would make the real system crash or misbehave, and ends the process.
[[noreturn]] void misuse(std::string_view text);

} // namespace velmo
