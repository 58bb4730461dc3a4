#include "core/support/Base64.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

/// The first byte gives the length of the pieces.
void checkBase64Texts(Input input) {
    const std::size_t length = std::size_t{1} + input.byte() % 16;
    const ByteView bytes = input.restBytes();
    require(Base64::decode(Base64::encode(bytes)) == Bytes(bytes.begin(), bytes.end()));

    const std::string_view text = textOf(bytes);
    const auto decoded = Base64::decode(text);
    require(!decoded || Base64::encode(*decoded) == text);
    Base64::Decoder decoder(text.size());
    bool sound = true;
    for (std::size_t at = 0; at < text.size() && sound; at += length)
        sound = decoder.append(text.substr(at, length));
    require((sound ? decoder.finish() : std::nullopt) == decoded);
}

const Target base64TextsTarget("Base64Texts", checkBase64Texts);

} // namespace

} // namespace velmo::Fuzz
