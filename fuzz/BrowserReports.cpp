#include "core/apps/BrowserUrlPolicy.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo {

/// A bundle identifier, a mode, and an address.
void Fuzz::target(Input input) {
    using namespace BrowserUrlPolicy;
    const std::string_view bundle = input.line();
    const std::string_view mode = input.line();
    const std::string_view url = input.rest();
    const auto known = browser(bundle);
    require(!known || Text::lowercased(known->bundle) == Text::lowercased(bundle));
    const auto text = script({.key = "x", .bundle = bundle, .scriptable = true});
    require(!text
            || std::ranges::count(*text, '"') == std::ranges::count(*script(browsers[0]), '"'));

    const Report told = report(known.value_or(browsers[0]), mode, url);
    require(!told.url || (mode == "normal" && *told.url == url && url.size() <= urlMax));
    require(!told.url || (url.starts_with("http") && url.contains("://")));
    require(!told.url
            || std::ranges::none_of(bytesOf(url), [](std::uint8_t byte) { return byte <= 0x20; }));
    require(!told.none || told == Report::nothing());
    require(JsonDocument::parse(encodeJson(told).value()).has_value());
}

} // namespace velmo
