#pragma once

#include <expected>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The command line of velmo-session. A verb comes first, then its options, then its words. From
/// the first word of `start` on, or after "--", everything is the program's, byte for byte.
namespace velmo {

struct SessionLine {
    std::string_view verb;
    std::map<std::string_view, std::string> options; ///< with their dashes; "" without a value
    std::vector<std::string> words;

    [[nodiscard]] bool has(std::string_view option) const { return options.contains(option); }
};

/// Reads the arguments, without the program's own name. The error is one line that says what is
/// wrong.
std::expected<SessionLine, std::string> readSessionLine(std::span<const std::string> arguments);

std::string sessionHelp();

} // namespace velmo
