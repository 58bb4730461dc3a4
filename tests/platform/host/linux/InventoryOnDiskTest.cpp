#include "platform/host/FolderList.h"
#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"
#include "tests/platform/host/linux/PropertyListFiles.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmo {
namespace {

namespace fs = std::filesystem;

std::string information(std::string_view name, std::string_view more = "") {
    return "<dict><key>CFBundleName</key><string>" + std::string(name)
           + "</string><key>CFBundleIdentifier</key><string>com.x</string>" + std::string(more)
           + "</dict>";
}

class InventoryOnDisk : public testing::Test {
protected:
    void TearDown() override { ::chmod((root / "Locked").c_str(), 0755); }

    void bundle(const fs::path& path, std::string_view bytes) const {
        writeFile(root / path / "Contents" / "Info.plist", bytes);
    }

    /// Name, path below the root, identifier and version of each.
    std::vector<std::string> scan(const std::vector<fs::path>& folders) const {
        std::vector<FileUrl> directories;
        for (const fs::path& folder : folders)
            directories.push_back({(root / folder).string()});
        const Inventory::Services services{.entries = Inventory::listFolder,
                                           .bundle = PropertyList::bundle,
                                           .byCharacter =
                                               localisedComparison(DigitOrder::byCharacter)};
        std::vector<std::string> found;
        for (const auto& [name, path, bundleId, version] : Inventory::scan(directories, services))
            found.push_back(name + ", " + path.substr(root.string().size()) + ", " + bundleId + ", "
                            + version);
        return found;
    }

    TemporaryFolder temporary;
    fs::path root = temporary.path();
};

TEST_F(InventoryOnDisk, ReadsBundlesOfEitherFormAndNamesDamagedOnesByTheirFile) {
    const std::string version = "<key>CFBundleShortVersionString</key><string>1.2</string>"
                                "<key>CFBundleDisplayName</key><string>Display</string>";
    bundle("A/Xml.app", xmlList(information("Name", version)));
    bundle("A/Binary.app", binaryList(information("Name", version)));
    bundle("A/Kinds.app", binaryList("<dict><key>CFBundleDisplayName</key><integer>1</integer>"
                                     "<key>CFBundleName</key><string>Kept</string>"
                                     "<key>CFBundleShortVersionString</key><real>1.5</real>"
                                     "<key>CFBundleIdentifier</key><array/></dict>"));
    bundle("A/Truncated.app", xmlList(information("x")).substr(0, 80));
    bundle("A/Array.app", xmlList("<array/>"));
    bundle("A/Garbage.app", "bplist00garbage and more garbage, and more of it still");
    bundle("A/Huge.app", xmlList(information(std::string(1100000, 'x'))));
    writeFile(root / "A/Flat.app/Info.plist", xmlList(information("At the root")));
    fs::create_directories(root / "A/Folder.app/Contents/Info.plist");
    writeFile(root / "A/Folder.app/Info.plist", xmlList(information("Behind a folder")));
    fs::create_directories(root / "A/Fifo.app/Contents");
    ASSERT_EQ(::mkfifo((root / "A/Fifo.app/Contents/Info.plist").c_str(), 0600), 0);
    fs::create_directories(root / "A/Empty.app");
    writeFile(root / "A/File.app", "no folder");
    fs::create_symlink("nowhere", root / "A/Dangling.app");

    EXPECT_THAT(scan({"A"}),
                testing::ElementsAre(
                    "Array, /A/Array.app, , ", "At the root, /A/Flat.app, com.x, ",
                    "Behind a folder, /A/Folder.app, com.x, ", "Dangling, /A/Dangling.app, , ",
                    "Display, /A/Binary.app, com.x, 1.2", "Display, /A/Xml.app, com.x, 1.2",
                    "Empty, /A/Empty.app, , ", "Fifo, /A/Fifo.app, , ", "File, /A/File.app, , ",
                    "Garbage, /A/Garbage.app, , ", "Huge, /A/Huge.app, , ",
                    "Kept, /A/Kinds.app, , ", "Truncated, /A/Truncated.app, , "));
}

TEST_F(InventoryOnDisk, WalksOneFolderDownAndThroughLinks) {
    const std::string list = xmlList(information("N"));
    for (const char* path : {"A/1.app", "A/Utilities/2.app", "Elsewhere/9.app", "Locked/10.app"})
        bundle(path, list);
    fs::create_directory_symlink(root / "Elsewhere", root / "A/Linked");
    fs::create_directory_symlink(root / "Elsewhere/9.app", root / "A/Link.app");
    fs::create_directory_symlink(root / "A", root / "A/Loop");
    ::chmod((root / "Locked").c_str(), 0);
    EXPECT_THAT(scan({"A", "A/../A/", "Missing", "A/1.app/Contents/Info.plist"}),
                testing::ElementsAre("N, /A/1.app, com.x, ", "N, /A/Link.app, com.x, ",
                                     "N, /A/Linked/9.app, com.x, ", "N, /A/Loop/1.app, com.x, ",
                                     "N, /A/Loop/Link.app, com.x, ",
                                     "N, /A/Utilities/2.app, com.x, "));
    const bool isRoot = ::geteuid() == 0; // whom no mode keeps out
    EXPECT_EQ(scan({"Locked"}).empty(), !isRoot);
    EXPECT_EQ(scan({"Elsewhere", "A/1.app/../../Elsewhere"}),
              std::vector<std::string>{"N, /Elsewhere/9.app, com.x, "});
    EXPECT_TRUE(Inventory::listFolder(std::string("/\0x", 3)).empty());
}

} // namespace
} // namespace velmo
