#include "core/apps/Inventory.h"

#include "core/output/Output.h"
#include "tests/Texts.h"

#include <map>

namespace velmo {
namespace {

using Folders = std::map<std::string, std::string>; ///< names by path; "/" ends a directory's
using Bundles = std::map<std::string, Inventory::BundleInformation>; ///< by path

/// Scans directories on a disk and returns the records as "name|path|bundleId|version". The scan
/// may list only the given folders.
Strings scan(const Folders& folders, std::vector<FileUrl> directories, Bundles bundles = {}) {
    const auto entries = [&](const std::string& path) {
        std::vector<Inventory::Entry> found;
        for (const std::string& name : words(folders.at(path)))
            found.push_back({name.substr(0, name.find('/')), name.ends_with('/')});
        return found;
    };
    const auto ignoringCase = [](std::string_view a, std::string_view b) {
        return Text::lowercased(a) <=> Text::lowercased(b);
    };
    const auto bundle = [&](const std::string& path) { return bundles[path]; };
    std::size_t told = 0; // of applications found
    const auto progress = [&](std::size_t found) { EXPECT_EQ(found, ++told); };
    Strings lines;
    for (const auto& [name, path, bundleId, version] :
         Inventory::scan(directories, {.entries = entries,
                                       .bundle = bundle,
                                       .byCharacter = ignoringCase,
                                       .progress = progress}))
        lines.push_back(name + "|" + path + "|" + bundleId + "|" + version);
    EXPECT_EQ(told, lines.size());
    return lines;
}

TEST(Inventory, ListsBundlesAndThoseOneFolderDown) {
    const Folders folders{
        {"/A", "Utils/ B.app/ .app/ .Hidden.app/ .folder/ C.app T.APP/ app notes.txt"},
        {"/A/Utils", "D.app/ Deeper/ .E.app/"},
        {"/A/T.APP", "F.app/ G.APP/"}};
    EXPECT_EQ(scan(folders, {{"/A"}}),
              words("B|/A/B.app|| C|/A/C.app|| D|/A/Utils/D.app|| F|/A/T.APP/F.app||"));
}

TEST(Inventory, NamesABundleAsItSaysOrAsItsFileIsNamed) {
    const Bundles bundles{
        {"/1.app", {.displayName = "Shown", .name = "N", .version = "1.0", .identifier = "com.x"}},
        {"/2.app", {.name = "N", .identifier = "com.y"}},
        {"/4.app", {.displayName = "", .name = "N", .version = ""}}};
    EXPECT_EQ(scan({{"/", "1.app/ 2.app/ 3.b.app/ 4.app/"}}, {{"/"}}, bundles),
              words("|/4.app|| 3.b|/3.b.app|| N|/2.app|com.y| Shown|/1.app|com.x|1.0"));
}

TEST(Inventory, ListsAPathOnceAsItWasReachedFirst) {
    Folders folders;
    for (const std::string& folder : words("/A/./B/..// /A /A/ /../A/B a/.. . /"))
        folders[folder] = "X.app/";
    EXPECT_EQ(
        scan(folders, {{"/A/./B/..//"}, {"/A"}, {"/A/"}, {"/../A/B"}, {"a/.."}, {"."}, {"/"}}),
        words("X|/../A/B/X.app|| X|/A/./B/..//X.app|| X|/X.app|| X|a/../X.app||"));
}

TEST(Inventory, OrdersByNameThenByTheBytesOfThePath) {
    const Folders folders{
        {"/b", "s.app/ App9.app/"}, {"/a", "S.app/ App10.app/"}, {"/B", "S.app/"}};
    EXPECT_EQ(
        scan(folders, {{"/b"}, {"/a"}, {"/B"}}),
        words("App10|/a/App10.app|| App9|/b/App9.app|| S|/B/S.app|| S|/a/S.app|| s|/b/s.app||"));
}

TEST(Inventory, LooksInThreeFoldersTheUsersOwnLast) {
    const auto [all, system, own] = Inventory::defaultDirectories("/Users/u/");
    EXPECT_EQ((Strings{all.path, system.path, own.path}),
              words("/Applications /System/Applications /Users/u/Applications"));
}

TEST(AppRecord, IsReadBackOnlyWithItsFourTexts) {
    const AppRecord record{.name = "N", .path = "/N.app", .bundleId = "com.n", .version = "1"};
    const std::string line = R"({"bundleId":"com.n","name":"N","path":"\/N.app","version":"1"})";
    EXPECT_EQ(Output::jsonLine(record), line);
    EXPECT_EQ(decodeRecord<AppRecord>(line), record);
    for (const char* name : {"bundleId", "name", "path", "version"})
        EXPECT_FALSE(decodeRecord<AppRecord>(changed(line, name, "x"))) << name;
}

} // namespace
} // namespace velmo
