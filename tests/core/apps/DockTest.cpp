#include "core/apps/DockAutohideRequest.h"
#include "core/apps/DockPrefsParser.h"
#include "core/output/Output.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

/// A tile of the preferences. A member that is `Value()` stands for a missing one.
struct Tile {
    Value type = "file-tile";
    Value url = "/A/N.app";
    Value label = Value();
    Value bundleId = Value();

    operator Value() const { // NOLINT(google-explicit-constructor)
        Value::Dictionary data{{"bundle-identifier", bundleId}, {"file-label", label}};
        data["file-data"] = Dictionary{{"_CFURLString", url}};
        return Dictionary{{"tile-type", type}, {"tile-data", data}};
    }
};

TEST(DockPrefsParser, KeepsTilesThatNameAnApplication) {
    const std::pair<Value, DockTile> kept[] = {
        {Tile{.url = "file:///A/N.app/", .label = " N ", .bundleId = " com.n\n"},
         {.bundleId = "com.n", .path = "/A/N.app", .label = "N"}},
        {Tile{}, {.path = "/A/N.app"}},
        {Tile{.type = Value()}, {.path = "/A/N.app"}},
        {Tile{.url = "/A/N.APP"}, {.path = "/A/N.APP"}},
        {Tile{.url = "/A/n.txt", .bundleId = "b"}, {.bundleId = "b", .path = "/A/n.txt"}},
        {Tile{.url = "https://x/N.app", .label = 5, .bundleId = "b"}, {.bundleId = "b"}},
        {Tile{.label = ' ' + times(1024, "l")}, {.path = "/A/N.app", .label = times(1024, "l")}},
        {Tile{.label = times(1025, "l")}, {.path = "/A/N.app"}},
    };
    for (const auto& [entry, tile] : kept)
        EXPECT_EQ(DockPrefsParser::apps(Array{entry}), std::vector{tile});

    std::vector<Value> leftOut{Array{}, "text", Dictionary{{"tile-type", "file-tile"}},
                               Dictionary{{"tile-data", Array{}}}};
    for (const Value& url : {Value("/A/readme.txt"), Value("/A/N.app/"), Value()})
        leftOut.push_back(Tile{.url = url});
    for (const char* type : {"spacer-tile", "File-Tile", "directory-tile"})
        leftOut.push_back(Tile{.type = type, .bundleId = "b"});
    EXPECT_EQ(DockPrefsParser::apps(leftOut), std::vector<DockTile>());
    EXPECT_EQ(DockPrefsParser::apps(Dictionary{{"0", Tile{}}}), std::vector<DockTile>());
}

TEST(DockPrefsParser, LooksAtTheFirst200EntriesOfAList) {
    Array many(250, Tile{.type = "directory-tile"});
    EXPECT_EQ(DockPrefsParser::others(many, "").size(), 200U);
    many[199] = Tile{};
    many[200] = Tile{};
    EXPECT_EQ(DockPrefsParser::apps(many).size(), 1U);
}

TEST(DockPrefsParser, KnowsTheDownloadsFolder) {
    const auto roleOf = [](Value type, Value url, std::string_view downloads) {
        const Array folders{Tile{.type = std::move(type), .url = std::move(url), .label = "D"}};
        const auto found = DockPrefsParser::others(folders, downloads);
        return found.empty() ? "left out" : found.front().role;
    };
    for (const char* downloads : {"/u/D", "/u/D/"}) {
        EXPECT_EQ(roleOf("directory-tile", "file:///u/D/", downloads), "downloads");
        for (const char* url : {"/u/D/", "/u/d", "/u"})
            EXPECT_EQ(roleOf("directory-tile", url, downloads), "folder") << url;
        EXPECT_EQ(roleOf("directory-tile", "https://x/u/D", downloads), "left out");
        EXPECT_EQ(roleOf(Value(), "/u/D", downloads), "left out");
    }
    EXPECT_EQ(roleOf("directory-tile", "/u/D", "/u/D//"), "folder");
}

TEST(DockPrefsParser, ReadsPathsOfAddressesAndPlainOnes) {
    EXPECT_EQ(DockPrefsParser::path("file:///My%20Apps/X.app/"), "/My Apps/X.app");
    EXPECT_EQ(DockPrefsParser::path("file://server/share//"), "/share/");
    EXPECT_EQ(DockPrefsParser::path("file:///"), "/");
    EXPECT_EQ(DockPrefsParser::path("/a b/%20/"), "/a b/%20/");
    for (const auto& text : words("file:// file:/a FILE:///a file:///%00 https://x/a relative"))
        EXPECT_EQ(DockPrefsParser::path(text), "") << text;
}

TEST(DockPrefsParser, ReadsAllPreferencesAndKeepsUnknownApartFromFalse) {
    const Array app{Tile{.url = Value(), .bundleId = "b"}};
    const Array folder{Tile{.type = "directory-tile", .url = "/D", .label = "D"}};
    EXPECT_EQ(DockPrefsParser::parse({}, "/D/"), DockPrefs());
    const Dictionary off{
        {"recent-apps", app}, {"show-recents", 0}, {"mod-count", 2.9}, {"trash-full", false}};
    EXPECT_EQ(DockPrefsParser::parse(off, "/D/"),
              (DockPrefs{.modCount = 2, .trashFull = false, .showRecents = false}));
    const Dictionary odd{
        {"recent-apps", app}, {"show-recents", "0"}, {"mod-count", "7"}, {"trash-full", Array{}}};
    EXPECT_EQ(DockPrefsParser::parse(odd, "/D/"), (DockPrefs{.recents = {{.bundleId = "b"}}}));
    const Dictionary whole{{"persistent-apps", app}, {"recent-apps", app},
                           {"show-recents", 1},      {"persistent-others", folder},
                           {"mod-count", 42},        {"trash-full", true}};
    EXPECT_EQ(Output::jsonLine(DockPrefsParser::parse(whole, "/D/")),
              R"({"apps":[{"bundleId":"b","label":"","path":""}],"modCount":42,"others":[)"
              R"({"label":"D","path":"\/D","role":"downloads"}],"recents":[)"
              R"({"bundleId":"b","label":"","path":""}],"showRecents":true,"trashFull":true})");
}

TEST(DockAutohideRequest, IsReadFromThreeListsOfWords) {
    using Request = DockAutohideRequest;
    EXPECT_EQ(Request::parse(words("get")), Request{Request::Get{}});
    EXPECT_EQ(Request::parse(words("set 1")), Request{Request::Set{.autohide = true}});
    EXPECT_EQ(Request::parse(words("set 0")), Request{Request::Set{.autohide = false}});
    expectRefused([](const std::string& line) { return Request::parse(words(line)); },
                  {"", "set", "get 1", "set 1 x", "set true", "set 01", "Get", "1"});
}

TEST(DockAutohideReport, SaysHowItWasFoundOut) {
    EXPECT_EQ(Output::jsonLine(DockAutohideReport{.autohide = true, .method = "defaults"}),
              R"({"autohide":true,"method":"defaults"})");
}

} // namespace
} // namespace velmo
