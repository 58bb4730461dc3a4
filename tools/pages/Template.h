#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Templates of pages: text with marks such as "@PROGRAM@", an upper-case name between two signs.
namespace velmo::Pages {

/// The name of each mark, without its signs, and what takes its place.
using Marks = std::vector<std::pair<std::string_view, std::string>>;

/// Returns the text with each mark replaced. What was put in is not searched. A sign that begins no
/// mark stays. Absent if the text has a mark that is not listed, or lacks one that is.
std::optional<std::string> filled(std::string_view text, const Marks& marks);

} // namespace velmo::Pages
