#pragma once

#include "core/support/Base64.h"
#include "tests/Texts.h"

#include <algorithm>

namespace velmo {

inline constexpr std::size_t mebibyte = 1048576;

/// Returns the head of a PNG image of 16384 times 3906 pixels, followed by meaningless bytes.
inline Bytes image(std::size_t length) {
    using namespace std::string_view_literals;
    constexpr std::string_view head = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x40\0\0\0\x0F\x42"sv;
    Bytes data(length);
    for (std::size_t i = 0; i < length; ++i)
        data[i] = static_cast<std::uint8_t>(i * i >> 3U);
    std::copy_n(head.begin(), std::min(length, head.size()), data.begin());
    return data;
}

inline std::string imageBody(ByteView data, std::string_view slash = "/") {
    const std::string text = Text::replacedAll(Base64::encode(data), "/", slash);
    return R"({"concealed":true,"png":")" + text + "\"}";
}

inline std::string textBody(const std::string& text) {
    return R"({"text":")" + text + "\"}";
}

} // namespace velmo
