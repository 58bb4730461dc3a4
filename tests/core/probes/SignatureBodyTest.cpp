#include "core/probes/SignatureBody.h"

#include "lab/instruments/SampleSignatures.h"
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace velmo {
namespace {

using Color = SignatureBody::Color;

std::optional<SignatureBody> decode(std::string_view json) {
    return SignatureBody::decode(bytesOf(json));
}

std::string list(std::size_t count, const std::string& element) {
    std::string result = "[";
    for (std::size_t i = 0; i < count; ++i)
        result += (i == 0 ? "" : ",") + element;
    return result + "]";
}

std::string bodyOf(const std::string& strokes) {
    return R"({"color":"black","strokes":)" + strokes + "}";
}

std::string padded(const std::string& json, std::size_t size) {
    return json + std::string(size - json.size(), ' ');
}

TEST(SignatureBody, ReadsWhatItWrites) {
    for (const auto& sample : SampleSignatures::all)
        EXPECT_EQ(decode(*encodeJson(sample.make())), sample.make()) << sample.name;
}

TEST(SignatureBody, AcceptsEveryLimit) {
    const auto one = SignatureBody{.strokes = {{{0, 1}}}, .color = Color::blue};
    EXPECT_EQ(decode(R"({"strokes":[[[0,1]]],"color":"blue","strokes2":null})"), one);
    EXPECT_EQ(decode(R"({"stroke\u0073":[[[-0.0,1e0]]],"color":"bl\u0075e"})"), one);
    EXPECT_EQ(decode(bodyOf("[[[1e-320,0.5]]]"))->strokes[0][0][0], 1e-320);
    EXPECT_TRUE(decode(padded(bodyOf("[[[0,0]]]"), 65'536)));
    EXPECT_TRUE(decode(bodyOf(list(64, "[[0,0]]"))));
    EXPECT_TRUE(decode(bodyOf(list(1, list(2048, "[0.5,1]")))));
    EXPECT_TRUE(decode(bodyOf(list(64, list(32, "[1,1]")))));
}

TEST(SignatureBody, RefusesWhatIsOverALimitOrOfAnotherForm) {
    for (const char* json :
         {"", "[]", R"({"strokes":[[[0,0]]]})", R"({"color":"blue"})",
          R"({"strokes":[[[0,0]]],"color":"red"})", R"({"strokes":[[[0,0]]],"color":"Blue"})",
          R"({"strokes":[[[0,0]]],"color":null})", R"({"strokes":[[[0,0]]],"color":1})",
          R"({"strokes":[[[0,0]]],"color":"blue","color":"blue"})",
          R"({"strokes":[[[0,0]]],"color":"blue"}x)"})
        EXPECT_FALSE(decode(json)) << json;
    for (const char* strokes :
         {"null", "{}", "[]", "[[]]", "[[[0,0]],[]]", "[[0,0]]", "[[[]]]", "[[[0]]]", "[[[0,0,0]]]",
          "[[[0,0],[0,0,0]]]", "[[[0,true]]]", "[[[0,null]]]", R"([[[0,"0"]]])",
          R"([[{"x":0,"y":0}]])", "[[[0,1.0001]]]", "[[[-1e-320,0]]]", "[[[0,2]]]", "[[[0,1e400]]]",
          "[[[0,NaN]]]"})
        EXPECT_FALSE(decode(bodyOf(strokes))) << strokes;
    EXPECT_FALSE(decode("\xEF\xBB\xBF" + bodyOf("[[[0,0]]]")));
    EXPECT_FALSE(decode(padded(bodyOf("[[[0,0]]]"), 65'537)));
    EXPECT_FALSE(decode(bodyOf(list(65, "[[0,0]]"))));
    EXPECT_FALSE(decode(bodyOf(list(1, list(2049, "[0,0]")))));
    EXPECT_FALSE(decode(bodyOf("[[[0,0]]," + list(2048, "[0,0]") + "]")));
}

} // namespace
} // namespace velmo
