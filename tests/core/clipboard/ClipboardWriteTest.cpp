#include "core/clipboard/ClipboardWrite.h"

#include "core/clipboard/PasteboardPolicy.h"
#include "tests/core/clipboard/ClipboardBodies.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velmo {
namespace {

using namespace std::string_view_literals;
using Write = ClipboardWrite;

std::optional<Write> parse(std::string_view body) {
    return Write::parse(bytesOf(body));
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
    for (const std::string body :
         {"", "{}", "[]", R"("text")", R"({"text":""})", R"({"text":"a\u0000b"})",
          R"({"text":"hi","png":""})", R"({"text":1})", R"({"text":["hi"]})", R"({"Text":"hi"})",
          R"({"text":"hi","concealed":1})", R"({"text":"hi","text":"hi"})", R"({"text":"hi"}x)",
          R"({"text":"hi","x":tru})", "{\"text\":\"\xFF\"}", "\xEF\xBB\xBF{\"text\":\"hi\"}",
          R"({"png":""})", R"({"png":"iVBO"})", R"({"png":1})"})
        EXPECT_FALSE(parse(body)) << body;
    for (const std::string_view part : {"\n", "\\n", "-", "=", "\xFF"})
        EXPECT_FALSE(parse(spoiled(part))) << part;
    for (const std::string_view end : {"\\u0000", "\xFF", "\\uD83D", "\n"})
        EXPECT_FALSE(parse(textBody("x", 20000, end))) << end;
    EXPECT_FALSE(parse(imageBody(image(23))));
    EXPECT_FALSE(parse(imageBody(tooHigh)));
    EXPECT_FALSE(parse(imageBody(image(30000)).insert(1, R"("text":"hi",)")));
}

TEST(ClipboardWrite, HoldsToItsLimitsToTheByte) {
    EXPECT_TRUE(parse(imageBody(image(5242880))));
    EXPECT_FALSE(parse(imageBody(image(5242881))));
    EXPECT_FALSE(parse(textBody("x", mebibyte, "x")));
    EXPECT_FALSE(parse(textBody("\\u0041", mebibyte, "x")));
    std::string body = textBody("x", 1);
    body.resize(6994604, ' ');
    EXPECT_TRUE(parse(body));
    EXPECT_FALSE(parse(body + ' '));
}

} // namespace
} // namespace velmo
