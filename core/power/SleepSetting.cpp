#include "core/power/SleepSetting.h"

#include "core/support/Text.h"

#include <utility>

namespace velmo {

std::optional<bool> parseSleepDisabled(std::string_view text) {
    for (const std::string_view line : Text::pieces(text, Text::isNewline)) {
        const auto fields = Text::pieces(line, Text::isSpaceOrTab);
        if (fields.size() >= 2 && fields[0] == "SleepDisabled")
            return fields[1] == "1";
    }
    return std::nullopt;
}

std::string_view thermalName(int raw) {
    const bool known = raw >= 0 && std::cmp_less(raw, thermalNames.size());
    return known ? thermalNames[static_cast<std::size_t>(raw)] : thermalNames.back();
}

} // namespace velmo
