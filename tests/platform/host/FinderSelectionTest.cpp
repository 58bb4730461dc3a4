#include "platform/host/FinderSelectionIdentity.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>

#include <fstream>

namespace velmo {
namespace {

TEST(FinderSelectionOnDisk, AFileIsKnownAgainUntilAnotherHasItsName) {
    using FinderSelectionParse::lstatIdentity;
    const TemporaryFolder folder;
    const std::string file = folder.path() / "file";
    const std::string link = folder.path() / "link";
    std::ofstream(file) << "x";
    std::filesystem::create_symlink(file, link);
    const auto known = lstatIdentity(file);
    EXPECT_NE(known, lstatIdentity(link));
    std::ofstream(file) << "other content";
    EXPECT_EQ(lstatIdentity(file), known);
    std::filesystem::rename(link, file);
    EXPECT_NE(lstatIdentity(file), known);
    EXPECT_FALSE(lstatIdentity(link));
    EXPECT_FALSE(lstatIdentity(file + std::string("\0x", 2)));
}

} // namespace
} // namespace velmo
