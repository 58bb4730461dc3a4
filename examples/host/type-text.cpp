/// Types a text of any length that the phone sent, as long as that is safe: the focus is still the
/// one that the phone saw, and not a password field. Then presses a key that the phone names. The
/// Mac is a stub that prints what it would post.

#include "core/input/HotkeyPlan.h"
#include "core/input/InputMessage.h"
#include "core/input/MessageKey.h"
#include "core/input/TextChunks.h"
#include "core/input/TypeTextRequest.h"
#include "core/input/TypingSafety.h"
#include "core/support/Text.h"
#include "core/windows/FocusTracker.h"

#include <iostream>

using namespace velmo;

namespace {

/// The element with the keyboard focus; on a Mac accessibility and IsSecureEventInputEnabled tell.
struct Focus {
    FocusSnapshot snapshot;
    std::optional<TypingSafety::Focus> element;
    bool secureInput = false;
};

Focus readFocus() {
    const TypingSafety::Focus element{.role = "AXTextArea", .subrole = "", .caretSettable = true};
    const auto flags = TypingSafety::focusFlags(false, element);
    return {.snapshot = {.identity = "window 7, element 3",
                         .editable = flags.editable,
                         .password = flags.password,
                         .pid = 501},
            .element = element};
}

/// Looks at the focus anew for each request, since it may move meanwhile. On a Mac a chunk goes
/// into a key-down and a key-up event for CGEventPost, by CGEventKeyboardSetUnicodeString.
bool type(const InputMessage::Text& text, const FocusTracker& tracker) {
    for (const TypeTextRequest& request : TypeTextRequest::ofText(text.text)) {
        const Focus now = readFocus();
        if (!tracker.accepts(text.target, now.snapshot)
            || TypingSafety::decide(now.secureInput, now.element) != TypingSafety::allowed)
            return false;
        std::cout << "a request of " << Text::utf16Length(request.text) << " units, typed by";
        for (const std::string& chunk : TextChunks::split(request.text))
            std::cout << ' ' << Text::utf16(chunk).size();
        std::cout << '\n';
    }
    return true;
}

/// Presses a key that the phone names. Only the focus matters: the key is the same in any layout.
bool press(const InputMessage::Key& key, const FocusTracker& tracker) {
    const auto hotkey = hotkeyOf(key);
    if (!hotkey || !tracker.accepts(key.target, readFocus().snapshot))
        return false;
    HeldKeys held; // the phone's
    for (const auto& step : HotkeyPlan::steps(KeyPhase::tap, *hotkey, {}, held))
        std::cout << "key " << step.code << (step.down ? " down\n" : " up\n");
    return true;
}

} // namespace

int main() {
    FocusTracker tracker; // of one phone, which is told the focus and answers with its "target"
    if (const auto event = tracker.observe(readFocus().snapshot))
        std::cout << encodeJson(*event).value() << '\n';
    const std::string text = std::string(510, 'x') + "\\u001b[31m\\ud83d\\ude00"; // as JSON
    const std::string enter = R"({"type":"key","key":"Enter","target":)";
    for (const std::string& line : {R"({"type":"text","target":"1","text":")" + text + "\"}",
                                    enter + "\"1\"}", enter + "\"2\"}"}) {
        const auto content = InputMessage::decode(line).value().content;
        const auto* typed = std::get_if<InputMessage::Text>(&content);
        if (typed ? !type(*typed, tracker) : !press(std::get<InputMessage::Key>(content), tracker))
            std::cout << "refused: the focus is not where the phone saw it\n";
    }
}
