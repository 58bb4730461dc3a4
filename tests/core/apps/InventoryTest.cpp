#include "core/apps/Inventory.h"

#include "core/output/Output.h"
#include "core/support/Text.h"

#include <gmock/gmock.h>

#include <map>

namespace velmo {
namespace {

using Inventory::BundleInformation;
using Inventory::Entry;

std::weak_ordering ignoringCase(std::string_view a, std::string_view b) {
    return Text::lowercased(a) <=> Text::lowercased(b);
}

/// Folders and bundles by path. What is asked about anything else is asked in error.
struct Disk {
    std::map<std::string, std::vector<Entry>> folders;
    std::map<std::string, BundleInformation> bundles;

    [[nodiscard]] std::vector<AppRecord> scan(const std::vector<FileUrl>& directories) const {
        return Inventory::scan(directories,
                               {.entries = [&](const auto& path) { return folders.at(path); },
                                .bundle =
                                    [&](const auto& path) {
                                        const auto found = bundles.find(path);
                                        return found == bundles.end() ? BundleInformation()
                                                                      : found->second;
                                    },
                                .byCharacter = ignoringCase});
    }
};

std::vector<std::string> pathsOf(const std::vector<AppRecord>& records) {
    std::vector<std::string> paths;
    for (const AppRecord& record : records)
        paths.push_back(record.path);
    return paths;
}

TEST(Inventory, ListsBundlesAndThoseOneFolderDown) {
    const Disk disk{
        .folders = {{"/A",
                     {{"Utilities", true},
                      {"B.app", true},
                      {".app", true},
                      {".Hidden.app", true},
                      {".folder", true},
                      {"C.app", false},
                      {"Tools.APP", true},
                      {"app", false},
                      {"notes.txt", false}}},
                    {"/A/Utilities", {{"D.app", true}, {"Deeper", true}, {".E.app", true}}},
                    {"/A/Tools.APP", {{"F.app", true}, {"G.APP", true}}}},
        .bundles = {}};
    EXPECT_THAT(
        pathsOf(disk.scan({{"/A"}})),
        testing::ElementsAre("/A/B.app", "/A/C.app", "/A/Utilities/D.app", "/A/Tools.APP/F.app"));
}

TEST(Inventory, NamesABundleAsItSaysOrAsItsFileIsNamed) {
    const Disk disk{
        .folders = {{"/A", {{"1.app", true}, {"2.app", true}, {"3.b.app", true}, {"4.app", true}}}},
        .bundles = {{"/A/1.app", {"Display", "Name", "1.0", "com.x"}},
                    {"/A/2.app", {std::nullopt, "Name", std::nullopt, "com.y"}},
                    {"/A/4.app", {"", "Name", "", std::nullopt}}}};
    EXPECT_EQ(disk.scan({{"/A"}}), (std::vector<AppRecord>{{"", "/A/4.app", "", ""},
                                                           {"3.b", "/A/3.b.app", "", ""},
                                                           {"Display", "/A/1.app", "com.x", "1.0"},
                                                           {"Name", "/A/2.app", "com.y", ""}}));
}

TEST(Inventory, ListsAPathOnceAsItWasFoundFirst) {
    const std::vector<Entry> entries{{"X.app", true}};
    const Disk disk{.folders = {{"/A/./B/..//", entries},
                                {"/A", entries},
                                {"/A/", entries},
                                {"/../A/B", entries},
                                {"a/..", entries},
                                {".", entries},
                                {"/", entries}},
                    .bundles = {}};
    EXPECT_THAT(
        pathsOf(disk.scan({{"/A/./B/..//"}, {"/A"}, {"/A/"}, {"/../A/B"}, {"a/.."}, {"."}, {"/"}})),
        testing::ElementsAre("/../A/B/X.app", "/A/./B/..//X.app", "/X.app", "a/../X.app"));
    EXPECT_THAT(pathsOf(disk.scan({{"/A"}, {"/A/./B/..//"}})), testing::ElementsAre("/A/X.app"));
}

TEST(Inventory, OrdersByNameThenByTheBytesOfThePath) {
    const Disk disk{.folders = {{"/b", {{"safari.app", true}, {"App 9.app", true}}},
                                {"/a", {{"Safari.app", true}, {"App 10.app", true}}},
                                {"/B", {{"SAFARI.app", true}}}},
                    .bundles = {}};
    EXPECT_THAT(pathsOf(disk.scan({{"/b"}, {"/a"}, {"/B"}})),
                testing::ElementsAre("/a/App 10.app", "/b/App 9.app", "/B/SAFARI.app",
                                     "/a/Safari.app", "/b/safari.app"));
}

TEST(AppRecord, GoesRoundAndNeedsItsFourTexts) {
    const AppRecord record{"N", "/N.app", "com.n", "1"};
    const std::string line = R"({"bundleId":"com.n","name":"N","path":"\/N.app","version":"1"})";
    EXPECT_EQ(Output::jsonLine(record), line);
    EXPECT_EQ(decodeRecord<AppRecord>(line), record);
    EXPECT_FALSE(decodeRecord<AppRecord>(R"({"bundleId":"","name":"","path":""})"));
    EXPECT_EQ(Inventory::defaultDirectories("/Users/u/"),
              (std::array{FileUrl{"/Applications"}, FileUrl{"/System/Applications"},
                          FileUrl{"/Users/u/Applications"}}));
}

} // namespace
} // namespace velmo
