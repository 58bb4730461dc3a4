#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace velmo {

/// A few names, prepared when compiled, among which one comparison finds a name. The names must
/// have different slots: a table of others does not compile, if it is `constexpr`.
class NameTable {
public:
    static constexpr std::size_t slots = 64;

    /// Returns the slot of a name: names with different slots are different.
    static constexpr std::size_t slotOf(std::string_view name) {
        const auto byte = [](char c) { return std::size_t{static_cast<unsigned char>(c)}; };
        return name.empty()
                   ? 0
                   : (byte(name.front()) + 3 * byte(name.back()) + 7 * name.size()) % slots;
    }

    /// The caller keeps the names alive as long as the table.
    explicit constexpr NameTable(std::span<const std::string_view> names) : names_(names) {
        positions_.fill(none);
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::uint8_t& position = positions_.at(slotOf(names[i]));
            if (position != none)
                throw "two names have the same slot";
            position = static_cast<std::uint8_t>(i);
        }
    }

    /// Returns the position of a name among the names, or their number if the name is not among
    /// them. The caller hands in the name's slot.
    [[nodiscard]] constexpr std::size_t find(std::string_view name, std::size_t slot) const {
        const std::size_t position = positions_[slot];
        return position < names_.size() && isSame(names_[position], name) ? position
                                                                          : names_.size();
    }

    [[nodiscard]] constexpr std::size_t find(std::string_view name) const {
        return find(name, slotOf(name));
    }

private:
    static constexpr std::uint8_t none = 0xFF;

    /// Compares names, which are too short for the library's call to pay.
    static constexpr bool isSame(std::string_view a, std::string_view b) {
        std::size_t i = 0;
        while (i < a.size() && i < b.size() && a[i] == b[i])
            ++i;
        return i == a.size() && i == b.size();
    }

    std::span<const std::string_view> names_;
    std::array<std::uint8_t, slots> positions_{};
};

} // namespace velmo
