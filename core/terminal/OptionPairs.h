#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// Words read as pairs of an option and its value. The value is whatever word comes second, even
/// one that looks like an option.
class OptionPairs {
public:
    /// Absent for an odd number of words, an option that is not accepted, and one given twice.
    /// Views point into the words.
    static std::optional<OptionPairs> read(std::span<const std::string> words,
                                           std::span<const std::string_view> accepted);

    [[nodiscard]] std::optional<std::string_view> value(std::string_view option) const;

    [[nodiscard]] bool has(std::string_view option) const { return value(option).has_value(); }

private:
    std::vector<std::pair<std::string_view, std::string_view>> pairs_;
};

} // namespace velmo
