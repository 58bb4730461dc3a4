#include "core/power/ThermalState.h"

namespace velmo {

std::string_view thermalName(int raw) {
    constexpr const auto& names = rawTexts<ThermalState>;
    const bool known = raw >= 0 && std::cmp_less(raw, names.size());
    return known ? names[static_cast<std::size_t>(raw)] : names.back();
}

} // namespace velmo
