#include "platform/host/FolderList.h"
#include "platform/host/PropertyList.h"
#include "tests/platform/host/linux/PropertyListFiles.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

namespace velmo {
namespace {

namespace fs = std::filesystem;

TEST(InventoryOnDisk, ABundleOfEitherFormSaysWhatItIsAndADamagedOneNothing) {
    const TemporaryFolder temporary;
    const fs::path contents = temporary.path() / "Contents";
    const fs::path file = contents / "Info.plist";
    const std::string whole = "<dict><key>CFBundleDisplayName</key><string>D</string>"
                              "<key>CFBundleName</key><string>N</string>"
                              "<key>CFBundleShortVersionString</key><string>1</string>"
                              "<key>CFBundleIdentifier</key><string>com.x</string></dict>";
    const auto bundle = [&] { return PropertyList::bundle(temporary.path()); };
    const Inventory::BundleInformation all{"D", "N", "1", "com.x"};
    const Inventory::BundleInformation nothing;
    for (const std::string& list : {xmlList(whole), binaryList(whole)}) {
        writeFile(file, list);
        EXPECT_EQ(bundle(), all);
        writeFile(file, list.substr(0, list.size() / 2));
        EXPECT_EQ(bundle(), nothing);
    }
    for (const std::string& list :
         {xmlList("<array/>"), xmlList(whole) + std::string(1048576, ' '),
          xmlList("<dict><key>CFBundleName</key><integer>1</integer></dict>")}) {
        writeFile(file, list);
        EXPECT_EQ(bundle(), nothing) << list.substr(0, 100);
    }
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(bundle(), nothing);
    writeFile(temporary.path() / "Info.plist", xmlList(whole));
    EXPECT_EQ(bundle(), all);
}

TEST(InventoryOnDisk, AFolderListsWhatLeadsToFolders) {
    const TemporaryFolder temporary;
    const fs::path root = temporary.path();
    fs::create_directory(root / ".folder");
    writeFile(root / "file", "x");
    fs::create_symlink(".folder", root / "link");
    fs::create_symlink("file", root / "link to a file");
    fs::create_symlink("nowhere", root / "dangling");
    std::map<std::string, bool> isDirectory;
    for (const Inventory::Entry& entry : Inventory::listFolder(root))
        isDirectory[entry.name] = entry.isDirectory;
    EXPECT_EQ(isDirectory, (std::map<std::string, bool>{{".folder", true},
                                                        {"file", false},
                                                        {"link", true},
                                                        {"link to a file", false},
                                                        {"dangling", false}}));
    for (const auto* name : {"/missing", "/file"})
        EXPECT_TRUE(Inventory::listFolder(root.string() + name).empty()) << name;
    EXPECT_TRUE(Inventory::listFolder(root.string() + std::string("\0x", 2)).empty());
}

} // namespace
} // namespace velmo
