#include "core/apps/DockAutohideRequest.h"
#include "core/apps/DockPrefsParser.h"
#include "core/output/Output.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

Dictionary tile(Value type, Value url, Value label = "", Value bundleId = "") {
    return {{"tile-type", std::move(type)},
            {"tile-data", Dictionary{{"bundle-identifier", std::move(bundleId)},
                                     {"file-label", std::move(label)},
                                     {"file-data", Dictionary{{"_CFURLString", std::move(url)}}}}}};
}

std::vector<DockTile> appsOf(Value value) {
    return DockPrefsParser::apps(&value);
}

TEST(DockPrefsParser, KeepsTilesThatNameAnApplication) {
    const std::string url = "file:///Applications/Notes.app/";
    const std::string path = "/Applications/Notes.app";
    const Value noType = Dictionary{
        {"tile-data", Dictionary{{"file-data", Dictionary{{"_CFURLString", "/A/N.APP"}}}}}};
    const Value noPath =
        Dictionary{{"tile-data", Dictionary{{"bundle-identifier", " com.x.Notes\n"}}}};
    const std::pair<Value, std::optional<DockTile>> cases[] = {
        {tile("file-tile", url, " Notes ", "com.x.Notes"), DockTile{"com.x.Notes", path, "Notes"}},
        {tile("file-tile", url), DockTile{"", path, ""}},
        {tile(" file-tile\n", url), DockTile{"", path, ""}},
        {tile(7, url), DockTile{"", path, ""}},
        {tile(std::string(1025, 'x'), url), DockTile{"", path, ""}},
        {noType, DockTile{"", "/A/N.APP", ""}},
        {noPath, DockTile{"com.x.Notes", "", ""}},
        {tile("file-tile", "https://x/Notes.app", 5, "com.x.Notes"),
         DockTile{"com.x.Notes", "", ""}},
        {tile("file-tile", url, std::string(1025, 'l'), "b"), DockTile{"b", path, ""}},
        {tile("file-tile", url, ' ' + std::string(1024, 'l'), "b"),
         DockTile{"b", path, std::string(1024, 'l')}},
        {tile("file-tile", "/A/readme.txt", "", "b"), DockTile{"b", "/A/readme.txt", ""}},
        {tile("file-tile", "/A/readme.txt"), {}},
        {tile("file-tile", "/A/Notes.app/"), {}},
        {tile("file-tile", Value()), {}},
        {tile("spacer-tile", url, "", "b"), {}},
        {tile("directory-tile", url, "", "b"), {}},
        {tile("File-Tile", url, "", "b"), {}},
        {Dictionary{{"tile-type", "file-tile"}}, {}},
        {Dictionary{{"tile-data", Array{}}}, {}},
        {Array{}, {}},
        {"text", {}},
    };
    int row = 0;
    for (const auto& [entry, expected] : cases) {
        const auto found = appsOf(Array{entry});
        EXPECT_EQ(found, expected ? std::vector{*expected} : std::vector<DockTile>())
            << "row " << row;
        ++row;
    }
    EXPECT_TRUE(appsOf(Dictionary{{"0", tile("file-tile", url)}}).empty());
    EXPECT_TRUE(DockPrefsParser::apps(nullptr).empty());

    Array many(250, tile("file-tile", url));
    EXPECT_EQ(appsOf(many).size(), 200U);
    std::fill_n(many.begin(), 199, tile("spacer-tile", url));
    EXPECT_EQ(appsOf(many).size(), 1U);
    many[199] = Value();
    EXPECT_TRUE(appsOf(many).empty());
}

TEST(DockPrefsParser, KnowsTheDownloadsFolder) {
    const Value folders = Array{
        tile("directory-tile", "file:///Users/u/Downloads/", "Downloads"),
        tile("directory-tile", "/Users/u/Downloads/"),
        tile("directory-tile", "/Users/u/downloads"),
        tile("directory-tile", "https://x/Users/u/Downloads"),
        tile("", "/Users/u/Downloads"),
        tile("file-tile", "/Users/u/Downloads"),
        tile("directory-tile", "file:///"),
    };
    for (const std::string_view downloads : {"/Users/u/Downloads", "/Users/u/Downloads/"})
        EXPECT_EQ(DockPrefsParser::others(&folders, downloads),
                  (std::vector<DockFolder>{{"/Users/u/Downloads", "Downloads", "downloads"},
                                           {"/Users/u/Downloads/", "", "folder"},
                                           {"/Users/u/downloads", "", "folder"},
                                           {"/", "", "folder"}}));
    for (const std::string_view downloads : {"/", "", "/Users/u/Downloads//"})
        EXPECT_EQ(DockPrefsParser::others(&folders, downloads)[0].role, "folder") << downloads;
    const Value many = Array(250, folders.array()->front());
    EXPECT_EQ(DockPrefsParser::others(&many, "").size(), 200U);
}

TEST(DockPrefsParser, ReadsPathsOfAddressesAndPlainOnes) {
    const std::pair<std::string, std::string> cases[] = {
        {"file:///My%20Apps/X.app/", "/My Apps/X.app"},
        {"file:///a//", "/a/"},
        {"file:///", "/"},
        {"file://server/share/", "/share"},
        {"/a b/%20/", "/a b/%20/"}};
    for (const auto& [text, path] : cases)
        EXPECT_EQ(DockPrefsParser::path(text), path) << text;
    for (const char* text :
         {"file://", "file:/a", "FILE:///a", "file:///%00", "https://x/a", "relative", ""})
        EXPECT_EQ(DockPrefsParser::path(text), "") << text;
}

TEST(DockPrefsParser, ReadsTheWholeAndTellsUnknownFromFalse) {
    const Value app = Array{tile("file-tile", "", "N", "b")};
    const std::string one = R"([{"bundleId":"b","label":"N","path":""}])";

    const std::pair<Dictionary, std::string> cases[] = {
        {{}, R"({"apps":[],"modCount":0,"others":[],"recents":[]})"},
        {{{"persistent-apps", app},
          {"recent-apps", app},
          {"persistent-others", Array{tile("directory-tile", "/D", "D")}},
          {"mod-count", 42},
          {"trash-full", true},
          {"show-recents", 1}},
         R"({"apps":)" + one
             + R"(,"modCount":42,"others":[{"label":"D","path":"\/D","role":"downloads"}],)"
               R"("recents":)"
             + one + R"(,"showRecents":true,"trashFull":true})"},
        {{{"recent-apps", app}, {"show-recents", 0}, {"mod-count", 2.9}, {"trash-full", 0.5}},
         R"({"apps":[],"modCount":2,"others":[],"recents":[],"showRecents":false,"trashFull":true})"},
        {{{"recent-apps", app}, {"show-recents", "0"}, {"mod-count", "7"}, {"trash-full", Array{}}},
         R"({"apps":[],"modCount":0,"others":[],"recents":)" + one + "}"},
        {{{"persistent-apps", "text"}, {"mod-count", true}, {"show-recents", std::nan("")}},
         R"({"apps":[],"modCount":1,"others":[],"recents":[]})"},
        {{{"mod-count", 1e30}, {"trash-full", false}},
         R"({"apps":[],"modCount":0,"others":[],"recents":[],"trashFull":false})"},
    };
    for (const auto& [prefs, line] : cases)
        EXPECT_EQ(Output::jsonLine(DockPrefsParser::parse(prefs, "/D/")), line);
}

TEST(DockAutohideRequest, IsThreeListsOfWords) {
    using Words = std::vector<std::string>;
    using Request = DockAutohideRequest;
    EXPECT_EQ(Request::parse(Words{"get"}), Request{Request::Get{}});
    EXPECT_EQ(Request::parse(Words{"set", "1"}), Request{Request::Set{true}});
    EXPECT_EQ(Request::parse(Words{"set", "0"}), Request{Request::Set{false}});
    for (const Words& words :
         {Words{}, Words{"set"}, Words{"get", "1"}, Words{"set", "1", "x"}, Words{"set", "true"},
          Words{"set", "01"}, Words{"set", ""}, Words{"Get"}, Words{"1"}})
        EXPECT_FALSE(Request::parse(words)) << testing::PrintToString(words);
    EXPECT_EQ(Output::jsonLine(DockAutohideReport{true, "defaults"}),
              R"({"autohide":true,"method":"defaults"})");
}

} // namespace
} // namespace velmo
