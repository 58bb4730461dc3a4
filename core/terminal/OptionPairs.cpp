#include "core/terminal/OptionPairs.h"

#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>

namespace velmo {

std::optional<OptionPairs> OptionPairs::read(std::span<const std::string> words,
                                             std::span<const std::string_view> accepted) {
    if (words.size() % 2 != 0)
        return std::nullopt;
    OptionPairs options;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        if (!Text::isOneOf(words[i], accepted) || options.has(words[i]))
            return std::nullopt;
        options.pairs_.emplace_back(words[i], words[i + 1]);
    }
    return options;
}

std::optional<std::string_view> OptionPairs::value(std::string_view option) const {
    for (const auto& [name, value] : pairs_) {
        if (name == option)
            return value;
    }
    return std::nullopt;
}

bool OptionPairs::hasAny(std::span<const std::string_view> options) const {
    return std::ranges::any_of(options, [this](std::string_view option) { return has(option); });
}

} // namespace velmo
