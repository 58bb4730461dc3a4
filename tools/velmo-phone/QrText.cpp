#include "tools/velmo-phone/QrText.h"

#include <qrencode.h>

#include <memory>
#include <string_view>

namespace velmo {

namespace {

constexpr int quietZone = 2; ///< modules of light around the code
constexpr std::string_view blackOnWhite = "\x1B[38;5;16;48;5;231m";
constexpr std::string_view plain = "\x1B[0m\n";

bool isDark(const QRcode& code, int x, int y) {
    const bool isInside = x >= 0 && y >= 0 && x < code.width && y < code.width;
    return isInside && (code.data[y * code.width + x] & 1) != 0;
}

/// Returns two modules, one above the other, as one character.
std::string_view halfBlocks(bool upper, bool lower) {
    if (upper)
        return lower ? "\u2588" : "\u2580";
    return lower ? "\u2584" : " ";
}

} // namespace

std::optional<std::string> qrText(const std::string& text) {
    const std::unique_ptr<QRcode, decltype(&::QRcode_free)> code(
        ::QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_L), &::QRcode_free);
    if (!code)
        return std::nullopt;
    std::string lines;
    for (int y = -quietZone; y < code->width + quietZone; y += 2) {
        lines += blackOnWhite;
        for (int x = -quietZone; x < code->width + quietZone; ++x)
            lines += halfBlocks(isDark(*code, x, y), isDark(*code, x, y + 1));
        lines += plain;
    }
    return lines;
}

} // namespace velmo
