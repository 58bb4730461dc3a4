#include "platform/simulated/RecordFault.h"

#include <algorithm>
#include <set>
#include <vector>

namespace velmo {

namespace {

/// Returns where the text that begins behind `start` ends: at its closing quote, or at the end of
/// `json`.
std::size_t endOfText(std::string_view json, std::size_t start) {
    std::size_t end = start;
    while (end < json.size() && json[end] != '"')
        end += json[end] == '\\' ? 2 : 1;
    return std::min(end, json.size());
}

bool isName(std::string_view json, std::size_t closingQuote) {
    const std::size_t next = json.find_first_not_of(" \t\r\n", closingQuote + 1);
    return next != std::string_view::npos && json[next] == ':';
}

} // namespace

std::optional<std::string> nameGivenTwice(std::string_view json) {
    std::vector<std::set<std::string_view>> names{{}}; // of each object that is still open
    for (std::size_t i = 0; i < json.size(); ++i) {
        if (json[i] == '{')
            names.emplace_back();
        if (json[i] == '}' && names.size() > 1)
            names.pop_back();
        if (json[i] != '"')
            continue;
        const std::size_t end = endOfText(json, i + 1);
        const std::string_view text = json.substr(i + 1, end - i - 1);
        if (isName(json, end) && !names.back().insert(text).second)
            return std::string(text);
        i = end;
    }
    return std::nullopt;
}

} // namespace velmo
