#include "core/apps/Inventory.h"

#include "core/output/Output.h"
#include "tests/Texts.h"

#include <map>

namespace velmo {
namespace {

std::weak_ordering ignoringCase(std::string_view a, std::string_view b) {
    return Text::lowercased(a) <=> Text::lowercased(b);
}

using Folders = std::map<std::string, std::string>; ///< names by path; "/" ends a directory's
using Bundles = std::map<std::string, Inventory::BundleInformation>; ///< by path

/// Scans directories on a disk. The scan may list none but the given folders.
std::vector<AppRecord> scan(const Folders& folders, const Strings& paths, Bundles bundles = {}) {
    std::vector<FileUrl> directories;
    for (const std::string& path : paths)
        directories.push_back({.path = path});
    const auto entries = [&](const std::string& path) {
        std::vector<Inventory::Entry> found;
        for (const std::string& name : words(folders.at(path)))
            found.push_back({name.substr(0, name.find('/')), name.ends_with('/')});
        return found;
    };
    const auto bundle = [&](const std::string& path) { return bundles[path]; };
    return Inventory::scan(directories,
                           {.entries = entries, .bundle = bundle, .byCharacter = ignoringCase});
}

Strings pathsOf(const std::vector<AppRecord>& records) {
    Strings paths;
    for (const AppRecord& record : records)
        paths.push_back(record.path);
    return paths;
}

TEST(Inventory, ListsBundlesAndThoseOneFolderDown) {
    const Folders folders{
        {"/A", "Utils/ B.app/ .app/ .Hidden.app/ .folder/ C.app Tools.APP/ app notes.txt"},
        {"/A/Utils", "D.app/ Deeper/ .E.app/"},
        {"/A/Tools.APP", "F.app/ G.APP/"}};
    EXPECT_EQ(pathsOf(scan(folders, {"/A"})),
              words("/A/B.app /A/C.app /A/Utils/D.app /A/Tools.APP/F.app"));
}

TEST(Inventory, NamesABundleAsItSaysOrAsItsFileIsNamed) {
    const Bundles bundles{
        {"/1.app", {.displayName = "Shown", .name = "N", .version = "1.0", .identifier = "com.x"}},
        {"/2.app", {.name = "N", .identifier = "com.y"}},
        {"/4.app", {.displayName = "", .name = "N", .version = ""}}};
    const std::vector<AppRecord> expected{
        {.name = "", .path = "/4.app"},
        {.name = "3.b", .path = "/3.b.app"},
        {.name = "N", .path = "/2.app", .bundleId = "com.y"},
        {.name = "Shown", .path = "/1.app", .bundleId = "com.x", .version = "1.0"}};
    EXPECT_EQ(scan({{"/", "1.app/ 2.app/ 3.b.app/ 4.app/"}}, {"/"}, bundles), expected);
}

TEST(Inventory, ListsAPathOnceAsItWasReachedFirst) {
    const Strings directories = words("/A/./B/..// /A /A/ /../A/B a/.. . /");
    Folders folders;
    for (const std::string& directory : directories)
        folders[directory] = "X.app/";
    EXPECT_EQ(pathsOf(scan(folders, directories)),
              words("/../A/B/X.app /A/./B/..//X.app /X.app a/../X.app"));
}

TEST(Inventory, OrdersByNameThenByTheBytesOfThePath) {
    const Folders folders{
        {"/b", "safari.app/ App9.app/"}, {"/a", "Safari.app/ App10.app/"}, {"/B", "SAFARI.app/"}};
    EXPECT_EQ(pathsOf(scan(folders, words("/b /a /B"))),
              words("/a/App10.app /b/App9.app /B/SAFARI.app /a/Safari.app /b/safari.app"));
}

TEST(Inventory, LooksInThreeFoldersTheUsersOwnLast) {
    EXPECT_EQ(Inventory::defaultDirectories("/Users/u/"),
              (std::array{FileUrl{"/Applications"}, FileUrl{"/System/Applications"},
                          FileUrl{"/Users/u/Applications"}}));
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
