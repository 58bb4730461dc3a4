#pragma once

#include "core/support/RawText.h"

namespace velmo {

/// How hot a Mac runs: the values of `NSProcessInfoThermalState` (NSProcessInfo.h), to
/// which a later system may add others. The text is the state's name.
enum class ThermalState : int { nominal, fair, serious, critical };

template<>
inline constexpr auto rawTexts<ThermalState> =
    std::to_array<std::string_view>({"nominal", "fair", "serious", "critical"});

/// Returns the name of a raw thermal state. An unknown number counts as the worst.
std::string_view thermalName(int raw);

inline std::string_view thermalName(ThermalState state) {
    return thermalName(std::to_underlying(state));
}

} // namespace velmo
