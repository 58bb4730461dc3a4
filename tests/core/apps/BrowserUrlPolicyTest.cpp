#include "core/apps/BrowserUrlPolicy.h"

#include "core/output/Output.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using namespace BrowserUrlPolicy;

std::string keyOf(const std::optional<Browser>& browser) {
    return browser ? std::string(browser->key) : "none";
}

TEST(BrowserUrlPolicy, KnowsBrowsersByIdentifierInWhateverCase) {
    const std::pair<std::optional<std::string>, std::string> cases[] = {
        {"com.google.Chrome", "chrome"},
        {"COM.GOOGLE.CHROME", "chrome"},
        {"com.microsoft.EdgeMac", "edge"},
        {"com.brave.browser", "brave"},
        {"com.apple.Safari", "safari"},
        {"com.google.Chrome.canary", "none"},
        {"com.google.Chrome ", "none"},
        {"", "none"},
        {std::nullopt, "none"},
    };
    for (const auto& [bundle, key] : cases)
        EXPECT_EQ(keyOf(browser(bundle)), key) << bundle.value_or("absent");
}

TEST(BrowserUrlPolicy, TheFirstBrowserWindowOnTheNormalLayerIsTheFrontOne) {
    const Window chrome{0, "com.google.Chrome"};
    const Window safari{0, "com.apple.safari"};
    const Window finder{0, "com.apple.finder"};
    const std::pair<std::vector<Window>, std::string> cases[] = {
        {{}, "none"},
        {{{25, "com.google.Chrome"}, finder, {0, "com.brave.Browser"}}, "brave"},
        {{{-1, "com.google.Chrome"}, {0, std::nullopt}, finder, safari, chrome}, "safari"},
        {{chrome, safari}, "chrome"},
        {{finder}, "none"},
    };
    for (const auto& [windows, key] : cases)
        EXPECT_EQ(keyOf(front(windows)), key);
}

TEST(BrowserUrlPolicy, ScriptsOnlyWhatCannotEndTheLiteral) {
    EXPECT_EQ(script(browsers[1]), "tell application id \"com.microsoft.edgemac\"\n"
                                   "    if (count of windows) is 0 then return {\"none\", \"\"}\n"
                                   "    set w to front window\n"
                                   "    return {(mode of w) as text, (URL of active tab of w) as "
                                   "text}\n"
                                   "end tell");
    EXPECT_FALSE(script(browsers[3]));
    EXPECT_TRUE(script({.key = "x", .bundle = "a.B9", .scriptable = true}));
    EXPECT_FALSE(script({.key = "x", .bundle = "a.B9", .scriptable = false}));
    for (const std::string_view bundle : {"", "a-b", "a b", "a\"b", "a.b\n", "a\\b", "caf\u00E9"})
        EXPECT_FALSE(script({.key = "x", .bundle = bundle, .scriptable = true})) << bundle;
}

TEST(BrowserUrlPolicy, OnlyANormalWindowTellsItsAddress) {
    const std::string plain = "https://example.org/";
    const std::string longest = plain + std::string(urlMax - plain.size(), 'x');

    struct Case {
        std::optional<std::string> mode, url;
        std::string line;
    };

    const std::string normal = R"({"browser":"edge","private":false})";
    const Case cases[] = {
        {{}, plain, R"({"browser":"edge"})"},
        {"none", plain, R"({"none":true})"},
        {"incognito", plain, R"({"browser":"edge","private":true})"},
        {"Normal", plain, R"({"browser":"edge"})"},
        {"normal ", plain, R"({"browser":"edge"})"},
        {"missing value", plain, R"({"browser":"edge"})"},
        {"normal", {}, normal},
        {"normal", plain, R"({"browser":"edge","private":false,"url":"https:\/\/example.org\/"})"},
        {"normal", "http://u:p@h\u00A0\u0085",
         "{\"browser\":\"edge\",\"private\":false,\"url\":\"http:\\/\\/u:p@h\u00A0\u0085\"}"},
        {"normal", "https://", R"({"browser":"edge","private":false,"url":"https:\/\/"})"},
        {"normal", "HTTPS://example.org", normal},
        {"normal", "file:///etc/passwd", normal},
        {"normal", " https://example.org", normal},
        {"normal", "https://example.org/a b", normal},
        {"normal", "https://example.org/\x1F", normal},
        {"normal", "https://example.org/\x7F", normal},
        {"normal", "https://example.org/\xFF", normal},
        {"normal", longest + "x", normal},
    };
    for (const auto& [mode, url, line] : cases)
        EXPECT_EQ(Output::jsonLine(report(browsers[1], mode, url)), line) << url.value_or("absent");
    EXPECT_EQ(report(browsers[0], "normal", longest).url, longest);
    EXPECT_EQ(Output::jsonLine(Report::automation("com.google.Chrome")),
              R"({"app":"com.google.Chrome","permission":"automation"})");
}

} // namespace
} // namespace velmo
