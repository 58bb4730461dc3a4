#include "core/apps/BrowserUrlPolicy.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The input is a bundle identifier, a mode and an address, a line each.
void checkBrowserReports(Input input) {
    using namespace BrowserUrlPolicy;
    const std::string_view bundle = input.line();
    const std::string_view mode = input.line();
    const std::string_view url = input.rest();
    const auto known = browser(bundle);
    require(!known || Text::lowercased(known->bundle) == Text::lowercased(bundle));
    const auto text = script({.key = "x", .bundle = bundle, .scriptable = true});
    require(!text
            || std::ranges::count(*text, '"') == std::ranges::count(*script(browsers[0]), '"'));

    const Report reported = report(known.value_or(browsers[0]), mode, url);
    require(!reported.url || (mode == "normal" && *reported.url == url && url.size() <= urlMax));
    require(!reported.url || (url.starts_with("http") && url.contains("://")));
    require(!reported.url
            || std::ranges::none_of(bytesOf(url), [](std::uint8_t byte) { return byte <= 0x20; }));
    require(!reported.none || reported == Report::nothing());
    require(JsonDocument::parse(encodeJson(reported).value()).has_value());
}

const Target browserReportsTarget("BrowserReports", checkBrowserReports);

} // namespace

} // namespace velmo::Fuzz
