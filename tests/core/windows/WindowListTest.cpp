#include "core/windows/WindowList.h"

#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowFilter.h"
#include "core/windows/WindowPrivacy.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using namespace std::literals;
using Dictionary = Value::Dictionary;

/// Returns the fewest members that make a row, with one of them replaced.
Dictionary entry(const std::string& name = "", const Value& value = {}) {
    Dictionary bounds{{"X", -1}, {"Y", 2.5}, {"Width", 800}, {"Height", 600}};
    Dictionary all{{"kCGWindowNumber", 7}, {"kCGWindowOwnerPID", 9}};
    (bounds.contains(name) ? bounds : all)[name] = value;
    all.try_emplace("kCGWindowBounds", bounds);
    return all;
}

TEST(CGWindowRow, ReadsWhatThePlatformTells) {
    const CGWindowRow row{.id = 7, .pid = 9, .bounds = {-1, 2.5, 800, 600}};
    EXPECT_EQ(CGWindowRow::parse(entry()), row);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowName", "")), row);
    for (const char* name : {"Name", "OwnerName", "Layer", "Alpha", "IsOnscreen"})
        EXPECT_EQ(CGWindowRow::parse(entry("kCGWindow"s + name, Value::Array{})), row) << name;

    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowOwnerName", "App"))->owner, "App");
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowName", " "))->title, " ");
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowLayer", 25.0))->layer, 25);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowAlpha", 0.5))->alpha, 0.5);
    EXPECT_TRUE(CGWindowRow::parse(entry("kCGWindowIsOnscreen", 1))->onScreen);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowNumber", 4294967295))->id, 4294967295);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowOwnerPID", 2147483647.0))->pid, 2147483647);
}

TEST(CGWindowRow, RefusesARowWithoutNumberOwnerOrBounds) {
    const std::pair<const char*, std::vector<Value>> refused[] = {
        {"kCGWindowNumber", {Value(), 0, -1, 0.9, 4294967296, "7", true, std::nan("")}},
        {"kCGWindowOwnerPID", {Value(), 0, -1, 2147483648, 4294967305, "9", true}},
        {"kCGWindowBounds", {Value(), "bounds", Dictionary{}, Value::Array{1, 2, 3, 4}}},
        {"X", {Value(), "1", true, std::nan("")}},
        {"Y", {Value(), -HUGE_VAL}},
        {"Width", {Value(), HUGE_VAL}},
        {"Height", {Value(), Dictionary{}}}};
    for (const auto& [name, values] : refused) {
        for (const Value& value : values)
            EXPECT_FALSE(CGWindowRow::parse(entry(name, value))) << name << &value - &values[0];
    }
}

TEST(WindowFilter, KeepsOrdinaryWindowsOfRegularApplications) {
    const CGWindowRow plain{.id = 1, .pid = 9, .alpha = 0.011, .bounds = {0, 0, 60, 60}};
    const auto keeps = [&](auto CGWindowRow::* member, const auto& value) {
        CGWindowRow row = plain;
        row.*member = value;
        return WindowFilter::keep(row, 4, "com.example.app", true);
    };
    EXPECT_TRUE(keeps(&CGWindowRow::owner, "dock") && keeps(&CGWindowRow::onScreen, false));
    EXPECT_FALSE(keeps(&CGWindowRow::layer, 1) || keeps(&CGWindowRow::layer, -1));
    EXPECT_FALSE(keeps(&CGWindowRow::alpha, 0.01) || keeps(&CGWindowRow::alpha, std::nan("")));
    for (const WindowBounds bounds : {WindowBounds{0, 0, 59.9, 400}, {0, 0, 400, 59.9}})
        EXPECT_FALSE(keeps(&CGWindowRow::bounds, bounds)) << bounds.width;
    for (const std::string_view owner : WindowFilter::systemOwners)
        EXPECT_FALSE(keeps(&CGWindowRow::owner, std::string(owner))) << owner;
    EXPECT_FALSE(keeps(&CGWindowRow::pid, 4) || WindowFilter::keep(plain, 4, "a.b", false));
    EXPECT_TRUE(WindowFilter::keep(plain, 4, std::nullopt, true));
    expectVerdicts([&](const auto& id) { return WindowFilter::keep(plain, 4, id, true); },
                   {"", "io.velmo", "com.apple.Passwords"}, {"io.velmo.", "IO.VELMO.helper"});
}

TEST(WindowPrivacy, HidesHoweverNamesAndTitlesAreSpelt) {
    for (const auto& pad : {""s, " - "s, "\xFF"s, "\0a"s, "\u00E9"s, std::string(99999, 'x')})
        expectVerdicts(
            [&](const auto& title) { return WindowPrivacy::looksPrivate(pad + title + pad); },
            {"Private Browsing — A", "INCÓGNITO", "Inco\u0301gnito", "INCO\u0301GNITO", "InPrivate",
             "FENÊTRE PRIVE\u0301E", "navegac\u0327a\u0303o privada", "PRIVATER MODUS"},
            {"", "private  window", "incogn\0ito"s, "fenetre privee"});
    for (const std::string_view id : WindowPrivacy::sensitiveBundleIds) {
        std::string upper(id);
        std::ranges::transform(upper, upper.begin(), ::toupper);
        EXPECT_TRUE(WindowPrivacy::isPrivate(upper, "harmless")) << upper;
        EXPECT_FALSE(WindowPrivacy::isSensitiveApp(upper + ".helper")) << upper;
    }
    EXPECT_TRUE(WindowPrivacy::isPrivate({}, "incognito"));
    EXPECT_FALSE(WindowPrivacy::isPrivate({}, {}));
}

TEST(WindowList, ListsTheKeptWindowsAndMarksTheFrontOne) {
    std::vector<CGWindowRow> rows(
        5, {.pid = 9, .owner = "App", .bounds = {0, 0, 60, 60}, .onScreen = true});
    for (std::uint32_t i = 0; i < rows.size(); ++i)
        rows[i].id = i + 1;
    rows[0].layer = 25; // its menu is in front of it
    rows[1].onScreen = false;
    rows[2].title = "t";
    rows[4].pid = 8;
    const auto owner = [](std::int32_t pid) -> WindowList::Owner {
        if (pid == 8)
            return {.isRegularApp = true, .startTime = -1};
        return {.bundleId = "a.b", .isRegularApp = true, .startTime = INT64_MAX};
    };
    const auto records = WindowList::records(rows, 4, 9, owner);
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(encodeJson(records[1]),
              R"({"app":"App","appId":"a.b","bounds":{"height":60,"width":60,"x":0,"y":0},)"
              R"("front":true,"id":3,"minimized":false,"onScreen":true,"pid":9,)"
              R"("started":"9223372036854775807","title":"t"})");
    EXPECT_FALSE(records[0].front || records[2].front || records[3].front);
    EXPECT_EQ(records[3].appId + records[3].title + records[3].started, "-");
    EXPECT_EQ(WindowList::records(rows, 9, 9, owner).size(), 1U);
}

} // namespace
} // namespace velmo
