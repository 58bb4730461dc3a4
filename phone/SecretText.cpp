#include "phone/SecretText.h"

namespace velmo {

std::string hexText(ByteView bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::string newSecret(const FillWithRandomBytes& random, std::size_t bytes) {
    Bytes secret(bytes);
    random(secret);
    return hexText(secret);
}

bool isSameSecret(std::string_view one, std::string_view other) {
    unsigned difference = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < one.size() && i < other.size(); ++i)
        difference |= static_cast<unsigned char>(one[i]) ^ static_cast<unsigned char>(other[i]);
    return difference == 0;
}

} // namespace velmo
