#include "core/clipboard/ClipboardWrite.h"

#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Base64.h"
#include "core/support/Text.h"
#include "tests/core/clipboard/LiveHeap.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velmo {
namespace {

using namespace std::string_view_literals;
using Write = ClipboardWrite;

constexpr std::size_t mebibyte = 1048576;

std::optional<Write> parse(std::string_view body) {
    return Write::parse(bytesOf(body));
}

Bytes image(std::size_t length) {
    constexpr std::string_view head = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x40\0\0\0\x0F\x42"sv;
    Bytes data(length);
    for (std::size_t i = 0; i < length; ++i)
        data[i] = i < head.size() ? static_cast<std::uint8_t>(head[i])
                                  : static_cast<std::uint8_t>(i * i >> 3U);
    return data;
}

std::string imageBody(ByteView data, bool escapeSlashes = false) {
    std::string text = Base64::encode(data);
    if (escapeSlashes)
        text = Text::replacedAll(text, "/", "\\/");
    return R"({"concealed":true,"png":")" + text + "\"}";
}

std::string textBody(std::string_view part, std::size_t times, std::string_view rest = "") {
    std::string body = R"({"text":")";
    for (std::size_t i = 0; i < times; ++i)
        body += part;
    return body.append(rest).append("\"}");
}

TEST(ClipboardWrite, ReadsATextOrAnImage) {
    const Write hi{Write::Text{"hi"}};
    const Write secret{Write::ConcealedText{"hi"}};
    const std::pair<std::string, Write> cases[] = {
        {R"({"text":"hi"})", hi},
        {R"({"text":"hi","concealed":true})", secret},
        {R"({"text":"hi","concealed":false})", hi},
        {R"({"text":"hi","concealed":null,"png":null})", hi},
        {R"( {"t\u0065xt":"h\u0069", "more":[1.5,{"text":"a","text2":"b"}]} )", hi},
        {R"({"text":" "})", {Write::Text{" "}}},
        {R"({"text":"a\\u0000b\r\n\u0001"})", {Write::Text{"a\\u0000b\r\n\x01"}}},
        {imageBody(image(24)), {Write::Png{image(24)}}},
        {imageBody(image(60000), true), {Write::Png{image(60000)}}},
        {textBody("x", mebibyte), {Write::Text{std::string(mebibyte, 'x')}}},
        {textBody("\\u0041", mebibyte), {Write::Text{std::string(mebibyte, 'A')}}},
        {textBody("\u6F22", mebibyte / 3, "x"),
         {Write::Text{textBody("\u6F22", mebibyte / 3, "x").substr(9, mebibyte)}}},
    };
    for (const auto& [body, write] : cases)
        EXPECT_TRUE(parse(body) == write) << body.substr(0, 80);
}

TEST(ClipboardWrite, RefusesEverythingElse) {
    const auto spoiled = [](std::string_view part) {
        std::string body = imageBody(image(30000));
        return body.replace(body.size() / 2, part.size(), part);
    };
    Bytes tooHigh = image(30000);
    tooHigh[23] = 0x43;
    const std::string cases[] = {
        "",
        "{}",
        "[]",
        R"("text")",
        R"({"text":""})",
        R"({"text":"a\u0000b"})",
        R"({"text":"hi","png":"iVBO"})",
        R"({"text":"hi","png":""})",
        R"({"text":1})",
        R"({"text":["hi"]})",
        R"({"Text":"hi"})",
        R"({"text":"hi","concealed":1})",
        R"({"text":"hi","concealed":"true"})",
        R"({"text":"hi","text":"hi"})",
        R"({"text":"hi"}x)",
        R"({"text":"hi",})",
        R"({"text":"hi","x":tru})",
        "{\"text\":\"\xFF\"}",
        "\xEF\xBB\xBF{\"text\":\"hi\"}",
        R"({"png":""})",
        R"({"png":"iVBO"})",
        R"({"png":1})",
        imageBody(image(23)),
        imageBody(tooHigh),
        spoiled("\n"),
        spoiled("\\n"),
        spoiled("-"),
        spoiled("="),
        spoiled("\xFF"),
        imageBody(image(30000)).insert(1, R"("text":"hi",)"),
        textBody("x", mebibyte, "x"),
        textBody("\\u0041", mebibyte, "x"),
        textBody("x", 20000, "\\u0000"),
        textBody("x", 20000, "\xFF"),
        textBody("x", 20000, "\\uD83D"),
        textBody("x", 20000, "\n"),
    };
    for (const std::string& body : cases)
        EXPECT_FALSE(parse(body)) << body.substr(0, 80);
}

TEST(ClipboardWrite, HoldsToItsLimitsToTheByte) {
    EXPECT_TRUE(parse(imageBody(image(5242880))));
    EXPECT_FALSE(parse(imageBody(image(5242881))));
    std::string body = textBody("x", 1);
    body.resize(6994604, ' ');
    EXPECT_TRUE(parse(body));
    EXPECT_FALSE(parse(body + ' '));
}

/// What it allocates is all that there is beside the caller's body.
TEST(ClipboardWrite, ALargeBodyIsNotCopied) {
    for (const bool escaped : {false, true}) {
        const std::string body = imageBody(image(5000000), escaped);
        const std::size_t peak = LiveHeap::peakDuring([&] { ASSERT_TRUE(parse(body)); });
        EXPECT_GT(peak, 5000000U) << "the image itself";
        EXPECT_LT(peak, body.size()) << escaped;
    }
    const std::string body = textBody("\\u0041", mebibyte);
    const std::size_t peak = LiveHeap::peakDuring([&] { ASSERT_TRUE(parse(body)); });
    EXPECT_LT(peak, body.size());
}

} // namespace
} // namespace velmo
