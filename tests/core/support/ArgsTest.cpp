#include "core/support/Args.h"

#include <gtest/gtest.h>

#include <string>

namespace velmo {
namespace {

TEST(Args, AProcessIdentifierIsAPositiveNumberInDigits) {
    EXPECT_EQ(Args::pid("123"), 123);
    EXPECT_EQ(Args::pid("0001"), 1);
    EXPECT_EQ(Args::pid("2147483647"), INT32_MAX);
    const std::optional<std::string> refused[] = {
        std::nullopt, "",         "0",          "000",
        "-5",         "+5",       "12a",        " 12",
        "12\n",       "1.0",      "2147483648", "99999999999",
        "4294967297", "\xD9\xA5", "\xFF",       std::string("1\0", 2)};
    for (const auto& text : refused)
        EXPECT_FALSE(Args::pid(text)) << testing::PrintToString(text);
}

TEST(Args, AnApplicationIsADirectoryNamedApp) {
    const auto onDisk = [](std::string_view path) { return path != "/File.app"; };
    EXPECT_EQ(Args::appPath("/Applications/Calculator.app", onDisk),
              FileUrl{"/Applications/Calculator.app"});
    EXPECT_EQ(Args::appPath(".app", onDisk), FileUrl{".app"});
    const std::optional<std::string> refused[] = {
        std::nullopt, "",          "/File.app",
        "/X.APP",     "/X.app/",   "/Xapp",
        "/X.app ",    "/\xFF.app", std::string("/X\0.app", 7)};
    for (const auto& text : refused)
        EXPECT_FALSE(Args::appPath(text, onDisk)) << testing::PrintToString(text);
}

} // namespace
} // namespace velmo
