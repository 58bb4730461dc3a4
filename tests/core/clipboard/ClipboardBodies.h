#pragma once

#include "core/support/Base64.h"
#include "core/support/Text.h"

#include <string>
#include <string_view>

namespace velmo {

inline constexpr std::size_t mebibyte = 1048576;

inline Bytes image(std::size_t length) {
    using namespace std::string_view_literals;
    constexpr std::string_view head = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x40\0\0\0\x0F\x42"sv;
    Bytes data(length);
    for (std::size_t i = 0; i < length; ++i)
        data[i] = i < head.size() ? static_cast<std::uint8_t>(head[i])
                                  : static_cast<std::uint8_t>(i * i >> 3U);
    return data;
}

inline std::string imageBody(ByteView data, bool escapeSlashes = false) {
    std::string text = Base64::encode(data);
    if (escapeSlashes)
        text = Text::replacedAll(text, "/", "\\/");
    return R"({"concealed":true,"png":")" + text + "\"}";
}

inline std::string textBody(std::string_view part, std::size_t times, std::string_view rest = "") {
    std::string body = R"({"text":")";
    for (std::size_t i = 0; i < times; ++i)
        body += part;
    return body.append(rest).append("\"}");
}

} // namespace velmo
