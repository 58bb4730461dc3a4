#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace velmo {

/// A single or double click where the pointer is.
struct MouseClickRequest {
    enum class Button { left, right, middle };

    Button button = Button::left;
    std::int64_t count = 1;

    /// Reads {"button":"left","count":2} of at most 256 bytes: the button as its raw text, the
    /// count 1 or 2, an integer, and 1 when it is missing. Absent when any other member is there.
    static std::optional<MouseClickRequest> parse(std::string_view json);

    struct Step {
        bool down = false;
        std::int64_t clickState = 1; ///< by which the system knows a first click from a second

        bool operator==(const Step&) const = default;
    };

    /// Down and up for each click. Any positive count is planned, also one that `parse` refuses.
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
