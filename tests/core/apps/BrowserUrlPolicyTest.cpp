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
    EXPECT_EQ(keyOf(browser("COM.GOOGLE.CHROME")), "chrome");
    EXPECT_EQ(keyOf(browser("com.microsoft.EdgeMac")), "edge");
    for (const char* bundle : {"com.google.Chrome.canary", "com.google.Chrome ", ""})
        EXPECT_EQ(keyOf(browser(bundle)), "none") << bundle;
    EXPECT_FALSE(browser(std::nullopt));
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
    EXPECT_EQ(script(browsers[1]), R"(tell application id "com.microsoft.edgemac"
    if (count of windows) is 0 then return {"none", ""}
    set w to front window
    return {(mode of w) as text, (URL of active tab of w) as text}
end tell)");
    EXPECT_FALSE(script(browsers[3]));
    EXPECT_TRUE(script({.key = "x", .bundle = "a.B9", .scriptable = true}));
    EXPECT_FALSE(script({.key = "x", .bundle = "a.B9", .scriptable = false}));
    for (const std::string_view bundle : {"", "a-b", "a b", "a\"b", "a.b\n", "a\\b", "caf\u00E9"})
        EXPECT_FALSE(script({.key = "x", .bundle = bundle, .scriptable = true})) << bundle;
}

TEST(BrowserUrlPolicy, OnlyANormalWindowTellsItsAddress) {
    const std::string plain = "https://example.org/";
    const std::string longest = plain + std::string(urlMax - plain.size(), 'x');

    const auto line = [](std::optional<std::string> mode, std::optional<std::string> url) {
        return Output::jsonLine(report(browsers[1], mode, url)).value_or("not encodable");
    };
    EXPECT_EQ(line({}, plain), R"({"browser":"edge"})");
    EXPECT_EQ(line("none", plain), R"({"none":true})");
    EXPECT_EQ(line("incognito", plain), R"({"browser":"edge","private":true})");
    for (const char* mode : {"Normal", "normal ", "missing value"})
        EXPECT_EQ(line(mode, plain), R"({"browser":"edge"})") << mode;
    EXPECT_EQ(line("normal", plain),
              R"({"browser":"edge","private":false,"url":"https:\/\/example.org\/"})");
    EXPECT_EQ(line("normal", {}), R"({"browser":"edge","private":false})");
    for (const std::string& url :
         {std::string("HTTPS://example.org"), std::string("file:///etc/passwd"), " " + plain,
          plain + "a b", plain + "\x1F", plain + "\x7F", plain + "\xFF", longest + "x"})
        EXPECT_EQ(line("normal", url), line("normal", {})) << url;
    for (const std::string& url :
         {std::string("http://u:p@h\u00A0\u0085"), std::string("https://")})
        EXPECT_EQ(report(browsers[0], "normal", url).url, url);
    EXPECT_EQ(report(browsers[0], "normal", longest).url, longest);
    EXPECT_EQ(Output::jsonLine(Report::automation("com.google.Chrome")),
              R"({"app":"com.google.Chrome","permission":"automation"})");
}

} // namespace
} // namespace velmo
