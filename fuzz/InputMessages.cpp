#include "core/input/InputMessage.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <cstdlib>

namespace velmo::Fuzz {

namespace {

void requireMotion(std::int64_t dx, std::int64_t dy) {
    require(-2048 <= dx && dx <= 2048 && -2048 <= dy && dy <= 2048);
}

void requireTarget(std::string_view digits) {
    require(!digits.empty() && digits.size() <= 16 && digits.front() != '0'
            && digits.find_first_not_of("0123456789") == std::string_view::npos);
}

void checkInputMessages(Input input) {
    const std::string_view line = input.rest();
    requireSpellingIsIgnored(line, InputMessage::decode, InputMessage::maxLine);
    const auto message = InputMessage::decode(line);
    if (!message)
        return;
    const auto* content = &message->content;
    if (const auto* move = std::get_if<InputMessage::Move>(content))
        requireMotion(move->dx, move->dy);
    if (const auto* scroll = std::get_if<InputMessage::Scroll>(content))
        requireMotion(scroll->dx, scroll->dy);
    if (const auto* zoom = std::get_if<InputMessage::Zoom>(content))
        require(zoom->steps != 0 && -8 <= zoom->steps && zoom->steps <= 8);
    if (const auto* typed = std::get_if<InputMessage::Text>(content)) {
        require(!typed->text.empty() && Text::utf16Length(typed->text) <= 1024);
        requireTarget(typed->target);
    }
    if (const auto* key = std::get_if<InputMessage::Key>(content)) {
        require(Text::isOneOf(key->name, InputMessage::keys));
        requireTarget(key->target);
    }
}

const Target inputMessagesTarget("InputMessages", checkInputMessages);

} // namespace

} // namespace velmo::Fuzz
