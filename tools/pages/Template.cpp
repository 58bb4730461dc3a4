#include "tools/pages/Template.h"

#include <algorithm>
#include <set>

namespace velmo::Pages {

namespace {

/// Returns the name of the mark that the text begins with; empty if it begins with none.
std::string_view markAt(std::string_view text) {
    const std::size_t end = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_", 1);
    const bool isMark = end != std::string_view::npos && end > 1 && text[end] == '@';
    return isMark ? text.substr(1, end - 1) : std::string_view();
}

} // namespace

std::optional<std::string> filled(std::string_view text, const Marks& marks) {
    std::string result;
    std::set<std::string_view> used;
    while (!text.empty()) {
        const std::size_t sign = std::min(text.find('@'), text.size());
        result += text.substr(0, sign);
        text.remove_prefix(sign);
        if (text.empty())
            break;
        const std::string_view name = markAt(text);
        const auto mark = std::ranges::find(marks, name, &Marks::value_type::first);
        if (!name.empty() && mark == marks.end())
            return std::nullopt;
        result += name.empty() ? "@" : mark->second;
        text.remove_prefix(name.empty() ? 1 : name.size() + 2);
        used.insert(name);
    }
    const bool isComplete =
        std::ranges::all_of(marks, [&](const auto& mark) { return used.contains(mark.first); });
    return isComplete ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace velmo::Pages
