#include "tools/velmo-session/DetachChoice.h"

#include <algorithm>

namespace velmo {

std::optional<DetachChoice> DetachChoice::parse(std::string_view text) {
    constexpr std::string_view keys = "abcdefghklnopqrstuvwxyz\\]^_"; // not i, j, m and [
    constexpr std::uint8_t controlBits = 0x1F;
    for (const std::string_view control : {"C-", "c-", "^"}) {
        if (!text.starts_with(control) || text.size() != control.size() + 1)
            continue;
        const char key = text.back();
        const bool isUpper = key >= 'A' && key <= 'Z';
        if (!keys.contains(isUpper ? static_cast<char>(key | 0x20) : key))
            return std::nullopt;
        DetachChoice choice;
        choice.key_ = static_cast<std::uint8_t>(key & controlBits);
        return choice;
    }
    return std::nullopt;
}

Bytes DetachChoice::swapped(ByteView bytes) const {
    Bytes result(bytes.begin(), bytes.end());
    for (std::uint8_t& byte : result) {
        if (byte == key_)
            byte = PtyAttach::DetachKey::escape;
        else if (byte == PtyAttach::DetachKey::escape)
            byte = key_;
    }
    return result;
}

} // namespace velmo
