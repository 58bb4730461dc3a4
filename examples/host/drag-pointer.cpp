/// Serves the pointer of a phone's continuous input: moves, clicks, drags, scroll and zoom.
/// Releases every button when the phone is gone. The Mac is a stub that prints what it would post.

#include "core/input/HeldButtons.h"
#include "core/input/InputMessage.h"
#include "core/windows/ClickCounter.h"

#include <cstdlib>
#include <iostream>

using namespace velmo;

namespace {

/// A phone, and the effects of its messages.
struct Phone {
    double now = 0; ///< seconds; when the message came
    ScreenPoint pointer{.x = 400, .y = 300};
    ClickCounter clicks{.interval = 0.5, .slop = 4}; // on a Mac: NSEvent.doubleClickInterval
    HeldButtons buttons;

    /// On a Mac: CGEventCreateMouseEvent, kCGMouseEventClickState, CGEventPost.
    void post(const HeldButtons::Press& press, const char* what) const {
        std::cout << (press.right ? "right " : "left ") << what << " at " << pointer.x << ", "
                  << pointer.y << ", click state " << press.count << '\n';
    }

    void operator()(const InputMessage::Move& move) { // on a Mac: no farther than the displays
        pointer = {.x = pointer.x + double(move.dx), .y = pointer.y + double(move.dy)};
        if (const auto press = buttons.dragged())
            return post(*press, "dragged");
        std::cout << "moved to " << pointer.x << ", " << pointer.y << '\n';
    }

    void operator()(const InputMessage::Button& button) {
        if (!button.down) {
            if (const auto press = buttons.take(button.right))
                post(*press, "up");
        } else if (!buttons.isDown(button.right)) {
            const auto count = clicks.press(button.right, pointer, now);
            buttons.pressed({.right = button.right, .count = count});
            post({.right = button.right, .count = count}, "down");
        }
    }

    void operator()(const InputMessage::Scroll& scroll) const {
        std::cout << "wheel 1 by " << scroll.dy << ", wheel 2 by " << scroll.dx << '\n';
    }

    void operator()(const InputMessage::Zoom& zoom) const { // press-hotkey.cpp taps hot keys
        for (auto left = std::abs(zoom.steps); left > 0; --left)
            std::cout << "tap of cmd" << (zoom.steps > 0 ? "+=\n" : "+-\n");
    }

    void operator()(const InputMessage::Release& /*all*/) { // and HotkeyPlan::releases of its keys
        for (const HeldButtons::Press& press : buttons.takeAll())
            post(press, "up");
    }

    void operator()(const auto& /*message*/) const {} // see type-text.cpp; a ping is only heard
};

} // namespace

int main() {
    Phone phone;
    for (const auto& [now, line] : std::initializer_list<std::pair<double, const char*>>{
             {1.0, R"({"type":"move","dx":12,"dy":-3})"},
             {2.0, R"({"type":"scroll","dx":0,"dy":-40})"},
             {3.0, R"({"type":"zoom","steps":2})"},
             {4.0, R"({"type":"button","button":"left","down":true})"},
             {4.1, R"({"type":"button","button":"left","down":false})"},
             {4.3, R"({"type":"button","button":"left","down":true})"},
             {4.4, R"({"type":"move","dx":30,"dy":0})"}}) {
        phone.now = now;
        std::visit(phone, InputMessage::decode(line).value().content);
    }
    phone(InputMessage::Release()); // the phone is gone: nothing stays down
}
