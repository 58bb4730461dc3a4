#include "core/apps/BrowserUrlPolicy.h"

#include "core/support/Ascii.h"
#include "core/support/Text.h"

#include <algorithm>

namespace velmo::BrowserUrlPolicy {

namespace {

constexpr std::string_view scriptHead = "tell application id \"";
constexpr std::string_view scriptTail = R"("
    if (count of windows) is 0 then return {"none", ""}
    set w to front window
    return {(mode of w) as text, (URL of active tab of w) as text}
end tell)";

bool mayBeReported(std::string_view url) {
    return url.size() <= urlMax && (url.starts_with("http://") || url.starts_with("https://"))
           && std::ranges::none_of(url, Ascii::isSpaceOrControl) && Text::isValidUtf8(url);
}

} // namespace

Report Report::nothing() {
    return {.none = true};
}

Report Report::automation(std::string_view app) {
    return {.permission = "automation", .app = std::string(app)};
}

std::optional<Browser> browser(std::optional<std::string_view> bundle) {
    if (!bundle)
        return std::nullopt;
    const std::string lower = Text::lowercased(*bundle);
    const auto* const found = std::ranges::find_if(
        browsers, [&](const Browser& row) { return Text::lowercased(row.bundle) == lower; });
    return found == std::end(browsers) ? std::nullopt : std::optional(*found);
}

std::optional<Browser> front(std::span<const Window> windows) {
    for (const Window& window : windows) {
        if (const auto found = window.layer == 0 ? browser(window.bundle) : std::nullopt)
            return found;
    }
    return std::nullopt;
}

std::optional<std::string> script(const Browser& browser) {
    if (!browser.scriptable || browser.bundle.empty()
        || !Ascii::isMadeOfLettersDigitsAnd(".", browser.bundle))
        return std::nullopt;
    return std::string(scriptHead).append(browser.bundle).append(scriptTail);
}

Report report(const Browser& browser, std::optional<std::string_view> mode,
              std::optional<std::string_view> url) {
    if (mode == "none")
        return Report::nothing();
    Report report{.browser = std::string(browser.key)};
    if (mode == "incognito")
        report.private_ = true;
    if (mode == "normal") {
        report.private_ = false;
        if (url && mayBeReported(*url))
            report.url = std::string(*url);
    }
    return report;
}

} // namespace velmo::BrowserUrlPolicy
