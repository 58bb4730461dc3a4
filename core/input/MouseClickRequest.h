#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace velmo {

/// A single or double click where the pointer is. Presses and releases of a phone's buttons are in
/// `HeldButtons`, the click counts of presses in core/windows/ClickCounter.h, and a place for the
/// pointer in core/probes/PointerTarget.h.
struct MouseClickRequest {
    enum class Button { left, right, middle };

    Button button = Button::left;
    std::int64_t count = 1;

    /// Reads {"button":"left","count":2} of at most 256 bytes. The button is a raw text; the count
    /// is the integer 1 or 2, and 1 if it is missing. Any other member is refused.
    static std::optional<MouseClickRequest> parse(std::string_view json);

    struct Step {
        bool down = false;
        std::int64_t clickState = 1; ///< tells the system a first click from a second

        bool operator==(const Step&) const = default;
    };

    /// Returns the events to post: down and up for each click. A count above 2 is planned too,
    /// though `parse` refuses it; one below 1 gives no events.
    [[nodiscard]] std::vector<Step> steps() const;

    static constexpr auto fields =
        std::tuple{field("button", &MouseClickRequest::button),
                   field("count", &MouseClickRequest::count).orDefault()};
    bool operator==(const MouseClickRequest&) const = default;
};

template<>
inline constexpr auto rawTexts<MouseClickRequest::Button> =
    std::to_array<std::string_view>({"left", "right", "middle"});

} // namespace velmo
