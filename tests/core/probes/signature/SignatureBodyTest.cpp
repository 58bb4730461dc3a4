#include "core/probes/signature/SignatureBody.h"

#include "lab/instruments/SampleSignatures.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace velmo {
namespace {

std::optional<SignatureBody> decode(std::string_view json) {
    return SignatureBody::decode(bytesOf(json));
}

std::string list(std::size_t count, const std::string& element) {
    return "[" + times(count - 1, element + ",") + element + "]";
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
    const auto one = SignatureBody{.strokes = {{{0, 1}}}, .color = SignatureBody::Color::blue};
    EXPECT_EQ(decode(R"({"strokes":[[[0,1]]],"color":"blue","strokes2":null})"), one);
    EXPECT_EQ(decode(R"({"stroke\u0073":[[[-0.0,1e0]]],"color":"bl\u0075e"})"), one);
    EXPECT_TRUE(decode(padded(bodyOf("[[[0,0]]]"), 65'536)));
    EXPECT_TRUE(decode(bodyOf(list(1, list(2048, "[0.5,1]")))));
    EXPECT_TRUE(decode(bodyOf(list(64, list(32, "[1,1]")))));
}

TEST(SignatureBody, RefusesWhatIsOverALimitOrOfAnotherForm) {
    expectRefused(decode,
                  {"", "[]", R"({"strokes":[[[0,0]]]})", R"({"color":"blue"})",
                   "\xEF\xBB\xBF" + bodyOf("[[[0,0]]]"), padded(bodyOf("[[[0,0]]]"), 65'537)});
    expectRefused(decode, R"({"strokes":[[[0,0]]],"color":#})",
                  {R"("red")", R"("Blue")", "null", "1", R"("blue","color":"blue")"});
    expectRefused(decode, bodyOf("#"),
                  {"null", "{}", "[]", "[[]]", "[[[0,0]],[]]", "[[0,0]]", "[[[]]]", "[[[0]]]",
                   "[[[0,0,0]]]", "[[[0,0],[0,0,0]]]", "[[[0,true]]]", "[[[0,null]]]",
                   R"([[[0,"0"]]])", "[[[0,1.0001]]]", "[[[-1e-320,0]]]", "[[[0,1e400]]]",
                   list(65, "[[0,0]]"), list(1, list(2049, "[0,0]")),
                   "[[[0,0]]," + list(2048, "[0,0]") + "]"});
}

} // namespace
} // namespace velmo
