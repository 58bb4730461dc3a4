#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/PropertyList.h"
#include "platform/host/PropertyListBounds.h"
#include "tests/platform/host/linux/PropertyListFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;

TEST(Bundle, IsReadFromEitherForm) {
    const TemporaryFolder bundle;
    const std::string file = bundle.path() / "Contents/Info.plist";
    const auto said = [&] { return PropertyList::bundle(bundle.path()); };
    const std::string whole = "<dict><key>CFBundleDisplayName</key><string>D</string>"
                              "<key>CFBundleName</key><string>N</string>"
                              "<key>CFBundleShortVersionString</key><string>1</string>"
                              "<key>CFBundleIdentifier</key><string>com.x</string></dict>";
    const Inventory::BundleInformation all{"D", "N", "1", "com.x"};
    const Inventory::BundleInformation nothing;
    fs::create_directory(bundle.path() / "Contents");
    for (const std::string& list : {xmlList(whole), binaryList(whole)}) {
        std::ofstream(file) << list;
        EXPECT_EQ(said(), all);
        EXPECT_TRUE(PropertyList::read(file));
        EXPECT_FALSE(PropertyList::read(file + std::string("\0x", 2)));
        std::ofstream(file) << list.substr(0, list.size() / 2);
        EXPECT_EQ(said(), nothing);
    }
    for (const std::string& list :
         {xmlList("<array/>"), xmlList(whole) + std::string(1048576, ' '),
          xmlList("<dict><key>CFBundleName</key><integer>1</integer></dict>")}) {
        std::ofstream(file) << list;
        EXPECT_EQ(said(), nothing) << list.substr(0, 100);
    }
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(said(), nothing);
    std::ofstream(bundle.path() / "Info.plist") << xmlList(whole);
    EXPECT_EQ(said(), all);
}

TEST(Bundle, IsReadFromTheWrapperOfAPhoneApplication) {
    std::string list = xmlList("<dict><key>CFBundleName</key><string>N</string></dict>");
    list.resize(PropertyListBounds::maxBytes, ' ');
    for (const char* const inner : {"Wrapper/Y.app", "Wrapper/Y.app/Contents"}) {
        const TemporaryFolder bundle;
        fs::create_directories(bundle.path() / inner);
        fs::create_directory_symlink("Wrapper/Y.app", bundle.path() / "WrappedBundle");
        std::ofstream file(bundle.path() / inner / "Info.plist");
        file << list << std::flush;
        EXPECT_EQ(PropertyList::bundle(bundle.path()).name, "N") << inner;
        file << ' ' << std::flush;
        EXPECT_NE(PropertyList::bundle(bundle.path()).name, "N") << inner;
    }
}

} // namespace
} // namespace velmo
