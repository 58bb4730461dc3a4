#include "core/clipboard/FinderSelectionParse.h"

#include "core/output/Output.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace FinderSelectionParse;
using namespace std::string_literals;

TEST(FinderSelectionParse, CleansAPathOrRefusesIt) {
    const std::string longest = "/" + times(4095, "a");
    const std::string accented = "/" + times(4095, "e\u0301");
    for (const std::string& path : {"/"s, "/a/./b/."s, "/a/..b"s, "/a/..."s, "/.. /b"s,
                                    "/a/%2e%2e/b"s, "/caf\u00E9\u0085\u00A0"s, longest, accented})
        EXPECT_EQ(clean(path), path) << path.substr(0, 40);
    EXPECT_EQ(clean("///"), "/");
    EXPECT_EQ(clean("/a//b///"), "/a//b");
    EXPECT_FALSE(clean(std::nullopt));
    expectRefused(clean, {"", "relative/x", "~/x", " /x", "/a/../b", "/a/..", "/a/../", "/..",
                          "/a/..//", "/\xFF", "/a\xC3", "/\xED\xA0\x80", longest + "b",
                          longest + "/", accented + "e"});
    for (int byte = 0; byte < 128; ++byte)
        EXPECT_EQ(clean("/a"s + static_cast<char>(byte) + "b").has_value(),
                  byte >= ' ' && byte != 0x7F)
            << byte;
}

TEST(FinderSelectionParse, KeepsTheFirstOfEachCleanItem) {
    EXPECT_EQ(selection("/f/", Strings{"/x/", "relative", "/x", "/y//", "/x/../y", "/"}),
              (Selection{.folder = "/f", .items = {"/x", "/y", "/"}}));
    EXPECT_EQ(selection("/..", {}), Selection{});
    Strings many;
    for (int i = 0; i < 250; ++i)
        many.insert(many.end(), {"/same", "bad", "/" + std::to_string(i) + "/"});
    const auto kept = selection(std::nullopt, many);
    ASSERT_EQ(kept.items.size(), 200U);
    EXPECT_EQ(kept.items.back(), "/198");

    EXPECT_EQ(Output::jsonLine(Selection{.items = {"/a"}}), R"({"items":["\/a"]})");
    EXPECT_EQ(Output::jsonLine(Selection{.folder = "/"}), R"({"folder":"\/","items":[]})");
    EXPECT_EQ(Output::jsonLine(Permission{}), R"({"permission":"automation"})");
}

const std::string same = "12:18446744073709551615:"; // what every file on the disk is

TEST(FinderSelectionParse, TheFirstFaultyLineDecides) {
    std::size_t asked = 0;
    const auto disk = [&](std::string_view path) -> std::optional<FileIdentity> {
        ++asked;
        const FileIdentity identity{.device = 12, .inode = UINT64_MAX};
        return path == "/gone" ? std::nullopt : std::optional(identity);
    };
    const auto expect = [&](const Strings& lines, const Check& check, std::size_t lookedUp) {
        asked = 0;
        EXPECT_TRUE(identityPaths(lines, disk) == check) << testing::PrintToString(lines);
        EXPECT_EQ(asked, lookedUp) << testing::PrintToString(lines);
    };
    expect({}, Bad{}, 0);
    expect(Strings(201, same + "/a"), Bad{}, 0);
    expect(Strings(200, same + "/a"), Ok{Strings(200, "/a")}, 200);
    expect({same + "/a:b/c", "0" + same + "/"}, Ok{{"/a:b/c", "/"}}, 2);
    expect({same + "/a", "12:34:/b", "bad"}, Changed{}, 2);
    expect({same + "/gone"}, Changed{}, 1);
    expect({"13:18446744073709551615:/a"}, Changed{}, 1);
    expect({same + "/a", "bad", same + "/gone"}, Bad{}, 1);
    for (const std::string& line :
         joined(words("12:34 12:/a 12:34: 12:x:/a :34:/a +12:34:/a 12:-34:/a 1:2:3:/a "
                      "12:18446744073709551616:/a"),
                {"", " 12:34:/a", same + "/a/", same + "a", same + "/a/../b", same + "/a\n"}))
        expect({line}, Bad{}, 0);
}

} // namespace
} // namespace velmo
