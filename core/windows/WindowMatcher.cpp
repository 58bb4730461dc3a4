#include "core/windows/WindowMatcher.h"

#include "core/support/Text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velmo::WindowMatcher {

namespace {

using Facts = std::span<const AXWindowFacts>;
using Index = std::optional<std::size_t>;
using Indices = std::vector<std::size_t>; ///< ascending

template<class List, class Test>
Index firstIndex(const List& list, const Test& test) {
    const auto found = std::ranges::find_if(list, test);
    return found == list.end() ? Index() : static_cast<std::size_t>(found - list.begin());
}

template<class Test>
Indices indicesWhere(Facts facts, const Test& test) {
    Indices found;
    for (std::size_t i = 0; i < facts.size(); ++i) {
        if (test(facts[i]))
            found.push_back(i);
    }
    return found;
}

/// Returns the title in the form in which titles are compared; absent if it is empty.
std::optional<std::string> comparable(std::optional<std::string_view> title) {
    return title && !title->empty() ? std::optional(Text::composed(*title)) : std::nullopt;
}

Index withNumber(Facts facts, std::uint32_t id) {
    return firstIndex(facts, [&](const AXWindowFacts& fact) { return fact.windowId == id; });
}

Indices withTitle(Facts facts, const Indices& candidates, const std::string& title) {
    Indices found;
    for (const std::size_t i : candidates) {
        if (comparable(facts[i].title) == title)
            found.push_back(i);
    }
    return found;
}

Index onlyOne(const Indices& candidates) {
    return candidates.size() == 1 ? Index(candidates.front()) : std::nullopt;
}

Index closest(Facts facts, const Indices& candidates, const WindowBounds& bounds) {
    Index best;
    double bestDistance = 0;
    for (const std::size_t i : candidates) {
        if (!facts[i].bounds)
            continue;
        const double distance = facts[i].bounds->distance(bounds);
        if (distance <= maxDistance && (!best || distance < bestDistance)) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

/// Finds a window among the candidates as `match` does if no window has the number.
Index byTitleOrPlace(Facts facts, const Indices& candidates,
                     const std::optional<std::string>& title, const WindowBounds& bounds) {
    if (title) {
        const Indices titled = withTitle(facts, candidates, *title);
        if (const Index found = closest(facts, titled, bounds))
            return found;
        if (const Index found = onlyOne(titled))
            return found;
    }
    return closest(facts, candidates, bounds);
}

Index resolveOffScreen(const WindowTarget& target, Facts facts) {
    const auto title = comparable(target.title);
    const Indices candidates = indicesWhere(
        facts, [](const AXWindowFacts& fact) { return fact.minimized && !fact.windowId; });
    if (title) {
        if (const Index found = onlyOne(withTitle(facts, candidates, *title)))
            return found;
    }
    if (!target.bounds)
        return std::nullopt;
    if (const Index found = onlyOne(candidates);
        found && (!title || !comparable(facts[*found].title)))
        return found;
    // A window in another space need not be minimized; one with another number is another window.
    const Indices unnumbered =
        indicesWhere(facts, [](const AXWindowFacts& fact) { return !fact.windowId; });
    return byTitleOrPlace(facts, unnumbered, title, *target.bounds);
}

} // namespace

std::optional<std::size_t> frontIndex(std::span<const CGWindowRow> rows,
                                      std::optional<std::int32_t> frontmostPid) {
    return firstIndex(
        rows, [&](const CGWindowRow& row) { return row.onScreen && frontmostPid == row.pid; });
}

std::optional<std::size_t> resolve(const WindowTarget& target,
                                   std::span<const AXWindowFacts> facts) {
    if (!target.onScreen) {
        const Index numbered = withNumber(facts, target.id);
        return numbered ? numbered : resolveOffScreen(target, facts);
    }
    return target.bounds ? match(target.id, target.title, *target.bounds, facts)
                         : withNumber(facts, target.id);
}

std::optional<std::size_t> match(std::uint32_t id, std::optional<std::string_view> title,
                                 const WindowBounds& bounds, std::span<const AXWindowFacts> facts) {
    if (const Index found = withNumber(facts, id))
        return found;
    const Indices all = indicesWhere(facts, [](const AXWindowFacts& /*any*/) { return true; });
    return byTitleOrPlace(facts, all, comparable(title), bounds);
}

} // namespace velmo::WindowMatcher
