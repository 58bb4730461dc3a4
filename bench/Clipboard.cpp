#include "bench/Suite.h"
#include "core/clipboard/ClipboardWrite.h"
#include "core/support/Base64.h"

#include <simdjson.h>

#include <array>
#include <memory>
#include <string>

namespace velmo::bench {

namespace {

constexpr std::size_t imageBytes = std::size_t{5} << 20; ///< the most that may be written

/// Returns a request to write a picture that begins as one of 100 x 100 pixels does; the rest of
/// its bytes are noise.
std::string imageBody() {
    Bytes png(imageBytes);
    std::uint32_t noise = 1;
    for (auto& byte : png) {
        noise = noise * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(noise >> 24);
    }
    constexpr auto head =
        std::to_array<std::uint8_t>({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13,
                                     'I',  'H', 'D', 'R', 0,    0,    0,    100,  0, 0, 0, 100});
    std::copy(head.begin(), head.end(), png.begin());
    return R"({"png":")" + Base64::encode(png) + "\"}";
}

/// Decodes four characters at a time by a table. The only check is that every character is in the
/// alphabet.
bool decodeBase64(std::string_view text, Bytes& out) {
    static const auto values = [] {
        std::array<std::uint32_t, 256> table{};
        table.fill(~0U);
        constexpr std::string_view alphabet =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (std::uint32_t i = 0; i < alphabet.size(); ++i)
            table[static_cast<unsigned char>(alphabet[i])] = i;
        return table;
    }();
    while (text.ends_with('='))
        text.remove_suffix(1);
    out.resize(text.size() * 3 / 4 + 3);
    std::size_t written = 0;
    std::uint32_t seen = 0;
    for (std::size_t i = 0; i + 4 <= text.size(); i += 4) {
        const auto value = [&](std::size_t k) {
            return values[static_cast<unsigned char>(text[i + k])];
        };
        seen |= value(0) | value(1) | value(2) | value(3);
        const std::uint32_t bits = value(0) << 18 | value(1) << 12 | value(2) << 6 | value(3);
        out[written++] = static_cast<std::uint8_t>(bits >> 16);
        out[written++] = static_cast<std::uint8_t>(bits >> 8);
        out[written++] = static_cast<std::uint8_t>(bits);
    }
    return seen < 64;
}

} // namespace

void addClipboard(Suite& suite) {
    const auto body = std::make_shared<const std::string>(imageBody());
    suite.compare({.what = "ClipboardWrite::parse",
                   .input = "a picture of 5 MiB",
                   .aims = {{.contender = "simdjson and a table",
                             .factor = 1 / 1.5,
                             .doesLess = "do not look at the picture"}}},
                  {{ours,
                    [=](benchmark::State& state) {
                        for (auto _ : state) {
                            if (!ClipboardWrite::parse(bytesOf(*body)))
                                state.SkipWithError("the picture was refused");
                        }
                    }},
                   {"simdjson and a table", [=](benchmark::State& state) {
                        for (auto _ : state) {
                            simdjson::dom::parser parser;
                            std::string_view text;
                            Bytes bytes;
                            if (parser.parse(*body)["png"].get(text) != simdjson::SUCCESS
                                || !decodeBase64(text, bytes))
                                state.SkipWithError("the picture was refused");
                            use(bytes);
                        }
                    }}});
}

} // namespace velmo::bench
