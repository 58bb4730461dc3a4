#include "core/output/Output.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowFilter.h"
#include "core/windows/WindowPrivacy.h"
#include "core/windows/WindowRecord.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using namespace std::literals;
using Dictionary = Value::Dictionary;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The least that makes a row, with one member replaced.
Dictionary entry(const std::string& name = "", const Value& value = {}) {
    Dictionary bounds{{"X", -1}, {"Y", 2.5}, {"Width", 800}, {"Height", 600}};
    Dictionary all{{"kCGWindowNumber", 7}, {"kCGWindowOwnerPID", 9}};
    (bounds.contains(name) ? bounds : all)[name] = value;
    all.try_emplace("kCGWindowBounds", bounds);
    return all;
}

TEST(CGWindowRow, ReadsWhatThePlatformTells) {
    const CGWindowRow least{.id = 7, .pid = 9, .bounds = {-1, 2.5, 800, 600}};
    EXPECT_EQ(CGWindowRow::parse(entry()), least);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowName", "")), least);
    for (const char* name : {"kCGWindowName", "kCGWindowOwnerName", "kCGWindowLayer",
                             "kCGWindowAlpha", "kCGWindowIsOnscreen"})
        EXPECT_EQ(CGWindowRow::parse(entry(name, Value::Array{})), least) << name;

    Dictionary whole = entry("kCGWindowName", " ");
    whole.merge(Dictionary{{"kCGWindowOwnerName", "App"}, {"kCGWindowLayer", 25.0}});
    whole.merge(Dictionary{{"kCGWindowAlpha", 0.5}, {"kCGWindowIsOnscreen", 1}});
    EXPECT_EQ(CGWindowRow::parse(whole),
              (CGWindowRow{7, 9, "App", " ", 25, 0.5, least.bounds, true}));
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowNumber", 4294967295))->id, 4294967295);
    EXPECT_EQ(CGWindowRow::parse(entry("kCGWindowOwnerPID", 2147483647.0))->pid, 2147483647);
}

TEST(CGWindowRow, IsNoneWithoutNumberOwnerAndPlace) {
    const std::pair<const char*, std::vector<Value>> refused[] = {
        {"kCGWindowNumber", {Value(), 0, -1, 0.9, 4294967296, "7", true, std::nan(""), infinity}},
        {"kCGWindowOwnerPID", {Value(), 0, -1, 2147483648, 4294967305, "9", true}},
        {"kCGWindowBounds", {Value(), "bounds", Dictionary{}, Value::Array{1, 2, 3, 4}}},
        {"X", {Value(), "1", true, std::nan("")}},
        {"Y", {Value(), -infinity}},
        {"Width", {Value(), infinity}},
        {"Height", {Value(), Dictionary{}}},
    };
    for (const auto& [name, values] : refused) {
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_FALSE(CGWindowRow::parse(entry(name, values[i]))) << name << ' ' << i;
    }
    EXPECT_FALSE(CGWindowRow::parse("text"));
}

TEST(WindowFilter, KeepsOrdinaryWindowsOfRegularApplications) {
    const auto keeps = [](std::int64_t layer, double alpha, double width, double height,
                          std::int32_t pid = 9, const char* owner = "App") {
        const CGWindowRow row{1, pid, owner, {}, layer, alpha, {0, 0, width, height}};
        return WindowFilter::keep(row, 4, "com.example.app", true);
    };
    EXPECT_TRUE(keeps(0, 0.011, 60, 60));
    EXPECT_FALSE(keeps(1, 1, 60, 60) || keeps(-1, 1, 60, 60) || keeps(0, 1, 60, 60, 4));
    EXPECT_FALSE(keeps(0, 0.01, 60, 60) || keeps(0, std::nan(""), 60, 60));
    EXPECT_FALSE(keeps(0, 1, 59, 400) || keeps(0, 1, 400, 59.9) || keeps(0, 1, 400, std::nan("")));
    for (const char* owner : {"Window Server", "Dock", "NotificationCenter", "loginwindow"})
        EXPECT_FALSE(keeps(0, 1, 60, 60, 9, owner)) << owner;
    const CGWindowRow plain{.id = 1, .pid = 9, .owner = "App", .bounds = {0, 0, 60, 60}};
    EXPECT_FALSE(WindowFilter::keep(plain, 4, "com.example.app", false));
    EXPECT_TRUE(WindowFilter::keep(plain, 4, std::nullopt, true));
    for (const char* id : {"", "io.velmo", "io.velmox.a", " io.velmo.a", "com.apple.Passwords"})
        EXPECT_TRUE(WindowFilter::keep(plain, 4, id, true)) << id;
    for (const char* id : {"io.velmo.", "IO.VELMO.helper"})
        EXPECT_FALSE(WindowFilter::keep(plain, 4, id, true)) << id;
}

TEST(WindowPrivacy, HidesHoweverNamesAndTitlesAreSpelt) {
    for (const auto& padding : {""s, " - "s, "\xFF"s, "\0a"s, "\u00E9"s, std::string(99999, 'x')}) {
        for (const std::string title :
             {"Private Browsing — A", "INCÓGNITO", "Inco\u0301gnito", "INCO\u0301GNITO",
              "InPrivate", "Fene\u0302tre prive\u0301e", "FENÊTRE PRIVE\u0301E",
              "navegac\u0327a\u0303o privada", "Ventana Privada", "PRIVATER MODUS"})
            EXPECT_TRUE(WindowPrivacy::isPrivate({}, padding + title + padding)) << title;
        for (const auto& title : {""s, "private  window"s, "incogn\0ito"s, "fenetre privee"s})
            EXPECT_FALSE(WindowPrivacy::looksPrivate(padding + title)) << title;
    }
    for (const std::string_view id : WindowPrivacy::sensitiveBundleIds) {
        std::string upper(id);
        std::ranges::transform(upper, upper.begin(), ::toupper);
        EXPECT_TRUE(WindowPrivacy::isPrivate(upper, "harmless")) << upper;
        EXPECT_FALSE(WindowPrivacy::isSensitiveApp(upper + ".helper")) << upper;
        EXPECT_FALSE(WindowPrivacy::isSensitiveApp(std::string(99999, 'x') + upper)) << upper;
    }
    EXPECT_FALSE(WindowPrivacy::isSensitiveApp(" com.apple.passwords"));
    EXPECT_FALSE(WindowPrivacy::isPrivate(std::nullopt, std::nullopt));
}

TEST(WindowRecord, IsWrittenForThePhone) {
    EXPECT_EQ(Output::jsonLine(WindowRecord{
                  7, 9, "App", "a.b", "a/b", {0, 25, 800, 600.5}, true, false, true, "1"}),
              R"({"app":"App","appId":"a.b","bounds":{"height":600.5,"width":800,"x":0,"y":25},)"
              R"("front":true,"id":7,"minimized":false,"onScreen":true,"pid":9,"started":"1",)"
              R"("title":"a\/b"})");
}

} // namespace
} // namespace velmo
