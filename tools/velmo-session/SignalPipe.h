#pragma once

#include <initializer_list>
#include <optional>

/// Signals as something to poll for.
namespace velmo::SignalPipe {

/// Has these signals put into a pipe from now on, in place of what they do. Returns the descriptor
/// to poll for them; absent if there are none left.
std::optional<int> catchSignals(std::initializer_list<int> signals);

/// Takes the next signal; absent if there is none.
std::optional<int> next(int descriptor);

} // namespace velmo::SignalPipe
