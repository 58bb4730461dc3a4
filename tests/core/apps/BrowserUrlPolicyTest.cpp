#include "core/apps/BrowserUrlPolicy.h"

#include "core/output/Output.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace BrowserUrlPolicy;

std::string keyOf(const std::optional<Browser>& browser) {
    return browser ? std::string(browser->key) : "none";
}

TEST(BrowserUrlPolicy, KnowsBrowsersByIdentifierInAnyLetterCase) {
    EXPECT_EQ(keyOf(browser("COM.GOOGLE.CHROME")), "chrome");
    EXPECT_EQ(keyOf(browser("com.microsoft.EdgeMac")), "edge");
    EXPECT_EQ(keyOf(browser("com.brave.Browser")), "brave");
    expectRefused(browser, {"com.google.Chrome ", "com.google.", ""});
    EXPECT_FALSE(browser(std::nullopt));
}

TEST(BrowserUrlPolicy, TheFirstBrowserWindowOnTheNormalLayerIsTheFrontOne) {
    constexpr const char* chrome = "com.google.Chrome";
    const Window safari{.layer = 0, .bundle = "com.apple.Safari"};
    const Window finder{.layer = 0, .bundle = "com.apple.finder"};
    const Window above{.layer = 25, .bundle = chrome};
    const Window below{.layer = -1, .bundle = chrome};
    const Window unknown{.layer = 0, .bundle = std::nullopt};
    const Window normal{.layer = 0, .bundle = chrome};
    EXPECT_EQ(keyOf(front(std::vector{above, below, unknown, finder, safari, normal})), "safari");
    EXPECT_EQ(keyOf(front(std::vector{finder, above})), "none");
}

TEST(BrowserUrlPolicy, ScriptsOnlyWhatCannotEndTheLiteral) {
    EXPECT_EQ(script(browsers[1]), R"(tell application id "com.microsoft.edgemac"
    if (count of windows) is 0 then return {"none", ""}
    set w to front window
    return {(mode of w) as text, (URL of active tab of w) as text}
end tell)");
    EXPECT_FALSE(script(browsers[3]));
    const auto scripted = [](std::string_view bundle) {
        return script({.key = "x", .bundle = bundle, .scriptable = true}).has_value();
    };
    expectVerdicts(scripted, {"a.B9"}, {"", "a-b", "a b", "a\"b", "a.b\n", "a\\b", "caf\u00E9"});
}

TEST(BrowserUrlPolicy, OnlyANormalWindowTellsItsAddress) {
    const std::string plain = "https://example.org/";
    const auto line = [](std::optional<std::string> mode, std::optional<std::string> url) {
        return Output::jsonLine(report(browsers[1], mode, url));
    };
    EXPECT_EQ(line("none", plain), R"({"none":true})");
    EXPECT_EQ(line("incognito", plain), R"({"browser":"edge","private":true})");
    EXPECT_EQ(line("normal", {}), R"({"browser":"edge","private":false})");
    EXPECT_EQ(line("normal", plain),
              R"({"browser":"edge","private":false,"url":"https:\/\/example.org\/"})");
    EXPECT_EQ(line({}, plain), R"({"browser":"edge"})");
    for (const char* mode : {"Normal", "normal "})
        EXPECT_EQ(line(mode, plain), R"({"browser":"edge"})") << mode;

    const std::string longest = plain + times(2048 - plain.size(), "x");
    expectVerdicts([](const std::string& url) { return report(browsers[0], "normal", url).url; },
                   {"http://u:p@h\u00A0\u0085", "https://", plain + "!~", longest},
                   {"HTTPS://example.org", "file:///etc/passwd", " " + plain, plain + "a b",
                    plain + "\x1F", plain + "\x7F", plain + "\xFF", longest + "x"});
}

TEST(BrowserUrlPolicy, ReportsAMissingPermission) {
    EXPECT_EQ(Output::jsonLine(Report::automation("com.google.Chrome")),
              R"({"app":"com.google.Chrome","permission":"automation"})");
}

} // namespace
} // namespace velmo
