/// Draws a signature as the phone sends it, and writes it to a file: draw-signature FILE.

#include "core/probes/signature/SignatureBody.h"
#include "core/probes/signature/SignatureRenderer.h"

#include <fstream>
#include <iostream>

using namespace velmo;

int main(int count, char** arguments) {
    const auto body = SignatureBody::decode(bytesOf(
        R"({"strokes":[[[0.1,0.6],[0.2,0.3],[0.3,0.6],[0.4,0.4]],[[0.5,0.5]]],"color":"blue"})"));
    if (count != 2 || !body)
        return 64;
    const bool blue = body->color == SignatureBody::Color::blue;
    const auto png = SignatureRenderer::png(body->strokes, blue);
    if (!png)
        return 1; // out of memory
    std::ofstream(arguments[1], std::ios::binary) << textOf(*png);
    std::cout << body->strokes.size() << " strokes on " << SignatureRenderer::width << " x "
              << SignatureRenderer::height << " pixels\n";
}
