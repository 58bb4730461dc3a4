#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/FinderSelectionIdentity.h"
#include "platform/host/FolderList.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

namespace velmo {
namespace {

class NamesOnDisk : public testing::Test {
protected:
    NamesOnDisk() {
        std::ofstream(file) << "x";
        std::filesystem::create_symlink("file", link);
    }

    TemporaryFolder folder;
    const std::string file = folder.path() / "file";
    const std::string link = folder.path() / "link";
};

TEST_F(NamesOnDisk, AFileIsKnownAgainUntilAnotherHasItsName) {
    using FinderSelectionParse::lstatIdentity;
    const auto known = lstatIdentity(file);
    EXPECT_NE(known, lstatIdentity(link));
    std::ofstream(file) << "other content";
    EXPECT_EQ(lstatIdentity(file), known);
    std::filesystem::rename(link, file);
    EXPECT_NE(lstatIdentity(file), known);
    EXPECT_FALSE(lstatIdentity(link));
    EXPECT_FALSE(lstatIdentity(file + std::string("\0x", 2)));
}

TEST_F(NamesOnDisk, ListsLinksToFoldersAsFolders) {
    std::filesystem::create_directory(folder.path() / ".folder");
    std::filesystem::create_symlink(".folder", folder.path() / "way");
    std::filesystem::create_symlink("nowhere", folder.path() / "dangling");
    std::map<std::string, bool> isDirectory;
    for (const Inventory::Entry& entry : Inventory::listFolder(folder.path()))
        isDirectory[entry.name] = entry.isDirectory;
    const std::map<std::string, bool> expected{
        {".folder", true}, {"way", true}, {"file", false}, {"link", false}, {"dangling", false}};
    EXPECT_EQ(isDirectory, expected);
    for (const std::string& path : {file, file + "/missing", std::string("/\0x", 3)})
        EXPECT_TRUE(Inventory::listFolder(path).empty()) << path;
}

} // namespace
} // namespace velmo
