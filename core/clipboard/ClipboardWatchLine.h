#pragma once

#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Record.h"

#include <cstdint>
#include <string>

namespace velmo {

/// Tells the phone that the clipboard has changed.
struct ClipboardWatchLine {
    std::int64_t changeCount = 0;
    std::string kind; ///< `PasteboardPolicy::watchKind`

    static ClipboardWatchLine of(std::int64_t changeCount, PasteboardPolicy::Types types) {
        return {.changeCount = changeCount,
                .kind = std::string(PasteboardPolicy::watchKind(types))};
    }

    static constexpr auto fields = std::tuple{
        constant("type", "clipboard"), field("changeCount", &ClipboardWatchLine::changeCount),
        field("kind", &ClipboardWatchLine::kind)};
    bool operator==(const ClipboardWatchLine&) const = default;
};

} // namespace velmo
