#include "core/clipboard/FinderSelectionParse.h"

#include "core/output/Output.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using namespace FinderSelectionParse;
using namespace std::string_literals;
using Paths = std::vector<std::string>;

TEST(FinderSelectionParse, CleansAPathOrRefusesIt) {
    const std::string longest = "/" + std::string(4095, 'a');
    std::string accented = "/";
    for (int i = 0; i < 4095; ++i)
        accented += "e\u0301";
    for (const std::string& path : {"/"s, "/a/./b/."s, "/a/..b"s, "/a/..."s, "/.. /b"s,
                                    "/a/%2e%2e/b"s, "/caf\u00E9\u0085\u00A0"s, longest, accented})
        EXPECT_EQ(clean(path), path) << path.substr(0, 40);
    EXPECT_EQ(clean("///"), "/");
    EXPECT_EQ(clean("/a//b///"), "/a//b");
    const std::string refused[] = {
        "",       "relative/x",    "~/x",     " /x",         "/a/../b",     "/a/..",
        "/a/../", "/..",           "/a\tb",   "/a\x7F",      "/a\0b"s,      "/\xFF",
        "/a\xC3", "/\xED\xA0\x80", "/a/..//", longest + "b", longest + "/", accented + "e",
    };
    for (const std::string& path : refused)
        EXPECT_FALSE(clean(path)) << testing::PrintToString(path.substr(0, 40));
    EXPECT_FALSE(clean(std::nullopt));
}

TEST(FinderSelectionParse, KeepsTheFirstOfEachCleanItem) {
    EXPECT_EQ(selection("/f/", Paths{"/x/", "relative", "/x", "/y//", "/x/../y", "/"}),
              (Selection{"/f", {"/x", "/y", "/"}}));
    EXPECT_EQ(selection("/..", {}), Selection{});
    Paths many;
    for (int i = 0; i < 250; ++i)
        many.insert(many.end(), {"/same", "bad", "/" + std::to_string(i) + "/"});
    const auto kept = selection(std::nullopt, many);
    ASSERT_EQ(kept.items.size(), 200U);
    EXPECT_EQ(kept.items.back(), "/198");

    EXPECT_EQ(Output::jsonLine(Selection{.items = {"/a"}}), R"({"items":["\/a"]})");
    EXPECT_EQ(Output::jsonLine(Selection{.folder = "/"}), R"({"folder":"\/","items":[]})");
    EXPECT_EQ(Output::jsonLine(Permission{}), R"({"permission":"automation"})");
}

TEST(FinderSelectionParse, TheFirstFaultyLineDecides) {
    Paths asked;
    const auto disk = [&](std::string_view path) -> std::optional<FileIdentity> {
        asked.emplace_back(path);
        return path == "/gone" ? std::nullopt : std::optional(FileIdentity{12, UINT64_MAX});
    };
    const std::string same = "12:18446744073709551615:";

    const std::tuple<Paths, Check, std::size_t> cases[] = {
        {{}, Bad{}, 0},
        {Paths(201, same + "/a"), Bad{}, 0},
        {Paths(200, same + "/a"), Ok{Paths(200, "/a")}, 200},
        {{same + "/a:b/c", "0" + same + "/"}, Ok{{"/a:b/c", "/"}}, 2},
        {{same + "/a", "12:34:/b", "bad"}, Changed{}, 2},
        {{same + "/gone"}, Changed{}, 1},
        {{"13:18446744073709551615:/a"}, Changed{}, 1},
        {{same + "/a", "bad", same + "/gone"}, Bad{}, 1},
    };
    for (const auto& [lines, check, count] : cases) {
        asked.clear();
        EXPECT_TRUE(identityPaths(lines, disk) == check) << testing::PrintToString(lines);
        EXPECT_EQ(asked.size(), count) << testing::PrintToString(lines);
    }
    for (const std::string& line :
         {""s, "12:34"s, "12:/a"s, "12:34:"s, "12:x:/a"s, ":34:/a"s, "+12:34:/a"s, "12:-34:/a"s,
          " 12:34:/a"s, "12:18446744073709551616:/a"s, "1:2:3:/a"s, same + "/a/", same + "a",
          same + "/a/../b", same + "/a\n", same + "/a\0"s})
        EXPECT_TRUE(identityPaths(Paths{line}, disk) == Check(Bad{})) << line;
}

} // namespace
} // namespace velmo
