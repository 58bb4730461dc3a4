#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace velmo {

/// Returns the position behind the closing quote of the literal that opens at `quote`; absent if it
/// does not close. The text need not be JSON.
inline std::optional<std::size_t> endOfLiteral(std::string_view json, std::size_t quote) {
    for (std::size_t end = json.find('"', quote + 1); end != std::string_view::npos;
         end = json.find('"', end + 1)) {
        // Backslashes escape one another in pairs; the run ends at the opening quote at the latest.
        std::size_t run = end;
        while (json[run - 1] == '\\')
            --run;
        if ((end - run) % 2 == 0)
            return end + 1;
    }
    return std::nullopt;
}

} // namespace velmo
