#include "core/apps/ForceQuitPolicy.h"

#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>

namespace velmo::ForceQuitPolicy {

namespace {

constexpr std::int32_t minOrdinaryPid = 2; ///< 0 is the kernel, 1 launchd

std::optional<std::string_view> nonEmpty(const std::optional<std::string>& text) {
    return text && !text->empty() ? std::optional<std::string_view>(*text) : std::nullopt;
}

/// Returns the text in lower case without blanks around it; "" if it is absent.
std::string normalized(std::optional<std::string_view> text) {
    return Text::lowercased(Text::trimmed(text.value_or(""), Text::isBlank));
}

} // namespace

bool isSystemPath(std::optional<std::string_view> path) {
    if (!path || !path->starts_with('/'))
        return false;
    const std::string lowered = Text::lowercased(*path);
    return std::ranges::any_of(
        systemPaths, [&](std::string_view folder) { return lowered.starts_with(folder); });
}

Verdict verdict(const Process& process, std::span<const std::int32_t> ownPids) {
    if (process.pid < minOrdinaryPid || std::ranges::find(ownPids, process.pid) != ownPids.end())
        return refuse;

    const std::string id = normalized(process.bundleId);
    const auto bundlePath = nonEmpty(process.bundlePath);
    const auto executablePath = nonEmpty(process.executablePath);
    if (id.starts_with(velmoBundlePrefix))
        return refuse;
    if (Text::isOneOf(id, relaunchBundleIds)) {
        const bool isFinder =
            bundlePath.transform(Text::lowercased) == Text::lowercased(finderPath);
        return isFinder ? relaunch : terminate;
    }
    if (Text::isOneOf(id, protectedBundleIds)) {
        const auto path = bundlePath ? bundlePath : executablePath;
        if (!path || isSystemPath(path))
            return refuse;
    }
    if (!isSystemPath(executablePath))
        return terminate;
    const std::string name = Text::lowercased(
        PathText::lastComponent(PathText::withoutTrailingSlashes(*executablePath)));
    return Text::isOneOf(name, protectedNames) ? refuse : terminate;
}

bool identityMatches(std::string_view expected, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath) {
    const std::string wanted = normalized(expected);
    const std::string id = normalized(bundleId);
    return !wanted.empty() && wanted == (id.empty() ? normalized(bundlePath) : id);
}

bool startMatches(std::optional<std::string_view> expected, std::optional<std::int64_t> actual) {
    if (!expected || expected->empty())
        return true;
    return actual > 0 && Decimal::parseUnsigned<std::int64_t>(*expected) == actual;
}

} // namespace velmo::ForceQuitPolicy
