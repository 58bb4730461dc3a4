/// Writes a picture of each sample signature into a folder. Every signature is first written as
/// JSON and read back, like a signature that comes from the phone.

#include "core/output/Output.h"
#include "core/probes/signature/SignatureRenderer.h"
#include "lab/instruments/SampleSignatures.h"

#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

using namespace velmo;

bool writePicture(const SampleSignatures::Named& sample, const std::filesystem::path& folder) {
    const auto json = Output::jsonLine(sample.make());
    const auto body = json ? SignatureBody::decode(bytesOf(*json)) : std::nullopt;
    if (!body)
        return false;
    const auto png =
        SignatureRenderer::png(body->strokes, body->color == SignatureBody::Color::blue);
    std::ofstream file(folder / (std::string(sample.name) + ".png"), std::ios::binary);
    return png && file << textOf(*png) << std::flush;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: signature-pictures FOLDER\n";
        return 2;
    }
    for (const SampleSignatures::Named& sample : SampleSignatures::all) {
        if (!writePicture(sample, arguments[1])) {
            std::cerr << "could not write " << sample.name << '\n';
            return 1;
        }
    }
}
