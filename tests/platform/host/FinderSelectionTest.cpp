#include "platform/host/FinderSelectionIdentity.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace FinderSelectionParse;

TEST(FinderSelectionOnDisk, AFileIsKnownAgainUntilAnotherBearsItsName) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "file: one";
    const fs::path link = folder.path() / "link";
    std::ofstream(file) << "x";
    fs::create_symlink(file, link);
    const auto line = [](const fs::path& path) {
        const auto identity = lstatIdentity(path.string()).value();
        return std::to_string(identity.device) + ':' + std::to_string(identity.inode) + ':'
               + path.string();
    };
    const std::vector<std::string> lines{line(file), line(link), line(folder.path())};
    const Check same = Ok{{file.string(), link.string(), folder.path().string()}};
    EXPECT_TRUE(identityPaths(lines, lstatIdentity) == same);
    EXPECT_NE(lstatIdentity(file.string()), lstatIdentity(link.string()));
    EXPECT_FALSE(lstatIdentity(link.string() + "/x"));
    EXPECT_FALSE(lstatIdentity(link.string() + std::string("\0x", 2)));

    std::ofstream(file) << "other content";
    EXPECT_TRUE(identityPaths(lines, lstatIdentity) == same);
    const fs::path other = folder.path() / "other";
    std::ofstream(other) << "x";
    fs::rename(other, file);
    EXPECT_TRUE(identityPaths(lines, lstatIdentity) == Check(Changed{}));
    fs::remove(file);
    EXPECT_TRUE(identityPaths(lines, lstatIdentity) == Check(Changed{}));
}

} // namespace
} // namespace velmo
