#include "core/input/Hotkey.h"
#include "core/output/Output.h"
#include "core/terminal/PtyFrame.h"

#include <iostream>
#include <string>
#include <string_view>

using namespace velmo;

int main() {
    // A request from outside is accepted whole or absent.
    const auto hotkey = Hotkey::parseJson(R"(["cmd","shift","4"])", false);
    if (!hotkey || Hotkey::parseJson(R"(["cmd","cmd","4"])", false))
        return 1;

    // A stream, cut anywhere, becomes whole frames.
    const Bytes stream = PtyFrame::data(bytesOf("ls\r"));
    PtyFrame::Decoder decoder;
    std::size_t decoded = 0;
    for (const std::uint8_t byte : stream) {
        const auto frames = decoder.feed({&byte, 1});
        if (!frames)
            return 1; // broken for good: close it
        decoded += frames->size();
    }
    if (decoded != 1)
        return 1;

    // A record is one line of JSON, its members sorted.
    Output::print(*hotkey, [](std::string_view line) { std::cout << line; });
}
