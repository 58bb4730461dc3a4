#include "core/input/TextChunks.h"
#include "core/input/TypingSafety.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

const std::string family = "👨‍👩‍👧";    // one character of 8 units
const std::string tall = "e" + times(24, "\u0301"); // one character of 25 units

/// Expects a text to be cut into chunks. A row is the chunks of a text, with blanks between them.
/// "+" stands for 18 letters, "^" for CR LF.
void expectChunks(const Strings& rows) {
    for (const std::string& row : rows) {
        const std::string spelt = Text::replacedAll(row, "+", times(18, "x"));
        Strings chunks = words(spelt);
        std::string text;
        for (std::string& chunk : chunks)
            text += chunk = Text::replacedAll(chunk, "^", "\r\n");
        EXPECT_EQ(TextChunks::split(text), chunks) << row;
    }
}

TEST(TextChunks, FillsEachChunkWithWholeCharacters) {
    expectChunks({"", "a", "+xx", "+xx +xx yyyyy", family + family + " " + family, tall + " b",
                  "a " + tall});
    // 19, 20 and 21 letters, with an accent on the last one
    expectChunks({"+x\u0301", "+x x\u0301", "+xx x\u0301", "+x\u0301 y", "+x x\u0301y"});
    // 18 to 21 letters and a character of two units
    expectChunks({"+^", "+^ y", "+x ^", "+x ^y", "+xx ^", "+xx ^y", "+xx x^y"});
    expectChunks({"+😀", "+😀 y", "+x 😀", "+x 😀y", "+xx 😀", "+xx 😀y", "+xx x😀y"});
    expectChunks({"+x\r y", "+xx \ry"}); // a carriage return of its own
    EXPECT_EQ(TextChunks::split("a\xFF"), Strings{"a\uFFFD"});
}

TEST(TypingSafety, RefusesPasswordFieldsAndUnknownFocus) {
    using namespace TypingSafety;

    const auto expect = [](Verdict verdict, Flags flags, const std::optional<Focus>& focus) {
        SCOPED_TRACE(focus ? focus->role + ", " + focus->subrole : "no focus");
        EXPECT_EQ(decide(false, focus), verdict);
        EXPECT_EQ(focusFlags(false, focus), flags);
        EXPECT_EQ(decide(true, focus), passwordField);
        EXPECT_EQ(focusFlags(true, focus), (Flags{.editable = bool(focus), .password = true}));
    };
    for (const std::string role : {"AXTextField", "AXTextArea", "AXComboBox", "AXSearchField"}) {
        expect(allowed, {.editable = true}, Focus{.role = role, .subrole = "x"});
        expect(unknownFocus, {}, Focus{.role = "AXGroup", .subrole = role});
        expect(unknownFocus, {}, Focus{.role = Text::lowercased(role)});
    }
    for (const bool caret : {false, true}) {
        const Flags flags{.editable = caret};
        expect(caret ? allowed : unknownFocus, flags, Focus{"AXWebArea", "", caret});
        const Flags secret{.editable = true, .password = true};
        expect(passwordField, secret, Focus{"AXSecureTextField", "", caret});
        expect(passwordField, secret, Focus{"AXTextField", "AXSecureTextField", caret});
    }
    expect(unknownFocus, {}, std::nullopt);
}

} // namespace
} // namespace velmo
