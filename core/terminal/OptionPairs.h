#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// Words read as pairs of an option and its value. The value is the second word, even one that
/// looks like an option. The words must outlive the pairs, which refer to them.
class OptionPairs {
public:
    /// Returns the pairs, or nothing for an odd number of words, an option that is not accepted,
    /// or an option that is given twice.
    static std::optional<OptionPairs> read(std::span<const std::string> words,
                                           std::span<const std::string_view> accepted);

    /// Returns the value of an option, or nothing if the option is not given.
    [[nodiscard]] std::optional<std::string_view> value(std::string_view option) const;

    [[nodiscard]] bool has(std::string_view option) const { return value(option).has_value(); }

    [[nodiscard]] bool hasAny(std::span<const std::string_view> options) const;

private:
    std::vector<std::pair<std::string_view, std::string_view>> pairs_;
};

} // namespace velmo
