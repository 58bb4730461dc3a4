#include "core/support/Args.h"
#include "platform/posix/DiskPath.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;

TEST(ApplicationPath, IsADirectoryOnTheRealDisk) {
    const TemporaryFolder folder;
    const fs::path root = folder.path();
    fs::create_directory(root / "Real.app");
    std::ofstream(root / "File.app") << "no bundle";
    fs::create_directory_symlink(root / "Real.app", root / "Link.app");
    fs::create_directory_symlink(root / "nowhere", root / "Dangling.app");

    for (const char* name : {"Real.app", "Link.app"}) {
        const std::string path = root / name;
        EXPECT_EQ(Args::appPath(path, DiskPath::isDirectory), FileUrl{path}) << path;
    }
    for (const char* name : {"File.app", "Dangling.app", "Missing.app", "Real.app/"})
        EXPECT_FALSE(Args::appPath((root / name).string(), DiskPath::isDirectory)) << name;
    EXPECT_FALSE(
        Args::appPath((root / "Real.app").string() + '\0' + ".app", DiskPath::isDirectory));
}

} // namespace
} // namespace velmo
