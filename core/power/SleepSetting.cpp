#include "core/power/SleepSetting.h"

#include "core/support/Text.h"

namespace velmo {

std::optional<bool> parseSleepDisabled(std::string_view text) {
    for (const std::string_view line : Text::pieces(text, Text::isNewline)) {
        const auto fields = Text::pieces(line, Text::isSpaceOrTab);
        if (fields.size() >= 2 && fields[0] == "SleepDisabled")
            return fields[1] == "1";
    }
    return std::nullopt;
}

} // namespace velmo
