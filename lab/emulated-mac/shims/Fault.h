#pragma once

#include <string_view>

/// What an emulated process says of itself: notes on its standard error, among what the program
/// writes there.
namespace velmo {

/// The exit statuses of the emulator's own, none of which the programs use.
namespace EmulatorStatus {
inline constexpr int unusable = 96; ///< the executable can't be loaded, or lacks a shim
inline constexpr int misused = 97;  ///< the program did what the real system would not bear
} // namespace EmulatorStatus

/// Writes one line of the transcript.
void note(std::string_view text);

/// Names what there is no shim for, and ends the process.
[[noreturn]] void endRun(std::string_view text);

/// Names what the real system would crash for, or misbehave for, and ends the process.
[[noreturn]] void misuse(std::string_view text);

} // namespace velmo
