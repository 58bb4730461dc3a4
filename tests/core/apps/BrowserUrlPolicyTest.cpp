#include "core/apps/BrowserUrlPolicy.h"

#include "core/output/Output.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace BrowserUrlPolicy;

TEST(BrowserUrlPolicy, KnowsBrowsersByIdentifierInAnyLetterCase) {
    EXPECT_EQ(browser("COM.GOOGLE.CHROME"), browsers[0]);
    EXPECT_EQ(browser("com.microsoft.EdgeMac").value().key, "edge");
    EXPECT_EQ(browser("com.brave.Browser").value().key, "brave");
    expectRefused(browser, {"com.google.Chrome ", "com.google.", ""});
    EXPECT_FALSE(browser(std::nullopt));
}

TEST(BrowserUrlPolicy, TheFirstBrowserWindowOnTheNormalLayerIsTheFrontOne) {
    const std::vector<Window> windows{
        {.layer = 25, .bundle = "com.google.Chrome"}, {.layer = -1, .bundle = "com.google.Chrome"},
        {.layer = 0, .bundle = std::nullopt},         {.layer = 0, .bundle = "com.apple.finder"},
        {.layer = 0, .bundle = "com.apple.Safari"},   {.layer = 0, .bundle = "com.google.Chrome"}};
    EXPECT_EQ(front(windows).value().key, "safari");
    EXPECT_FALSE(front(std::span(windows).first(4)));
}

TEST(BrowserUrlPolicy, ScriptsOnlyIdentifiersThatCannotEndTheStringLiteral) {
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
    EXPECT_EQ(line("Normal", plain), R"({"browser":"edge"})");

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
