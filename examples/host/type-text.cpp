/// Types a text of any length that the phone sent, where it is safe: as long as the focus is still
/// the one that the phone saw, and no password field. The Mac is a stub that prints what it would
/// post.

#include "core/input/InputMessage.h"
#include "core/input/TextChunks.h"
#include "core/input/TypeTextRequest.h"
#include "core/input/TypingSafety.h"
#include "core/support/Text.h"
#include "core/windows/FocusTracker.h"

#include <iostream>

using namespace velmo;

namespace {

/// What has the keyboard focus; on a Mac accessibility tells, and IsSecureEventInputEnabled.
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

/// On a Mac: CGEventKeyboardSetUnicodeString on a key-down and a key-up event, and CGEventPost.
void post(const std::u16string& units) {
    std::cout << ' ' << units.size();
}

bool type(const TypeTextRequest& request, const std::string& target, const FocusTracker& tracker) {
    const Focus now = readFocus();
    if (!tracker.accepts(target, now.snapshot)
        || TypingSafety::decide(now.secureInput, now.element) != TypingSafety::allowed)
        return false;
    for (const std::string& chunk : TextChunks::split(request.text))
        post(Text::utf16(chunk));
    return true;
}

} // namespace

int main() {
    FocusTracker tracker; // of one phone
    if (const auto event = tracker.observe(readFocus().snapshot))
        std::cout << encodeJson(*event).value()
                  << '\n'; // to the phone, which answers with "target"

    const std::string text = std::string(510, 'x') + "\\u001b[31m\\ud83d\\ude00"; // as JSON
    const auto message =
        InputMessage::decode(R"({"type":"text","target":"1","text":")" + text + "\"}");
    const auto* typed = message ? std::get_if<InputMessage::Text>(&message->content) : nullptr;
    if (typed == nullptr)
        return 1;
    for (const TypeTextRequest& request : TypeTextRequest::ofText(typed->text)) {
        std::cout << "a request of " << Text::utf16Length(request.text) << " units, typed by";
        if (!type(request, typed->target, tracker))
            return 1; // the focus has moved: the rest is not typed
        std::cout << '\n';
    }
}
