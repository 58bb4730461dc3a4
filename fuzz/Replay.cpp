/// Replaces the fuzzer in builds without it: fuzz_replay TARGET FOLDER hands each file of the
/// folder to the target, once. A finding ends the process.

#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace velmo;
namespace fs = std::filesystem;

void replay(const Fuzz::Target& target, const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::cerr << path.filename().string() << '\n'; // the last one named is the finding
    target.run(bytesOf(bytes));
}

} // namespace

int main(int argc, char** argv) {
    const auto* const target = argc == 3 ? Fuzz::Target::find(argv[1]) : nullptr;
    if (target == nullptr) {
        std::cerr << "usage: fuzz_replay TARGET FOLDER\n";
        return EXIT_FAILURE;
    }
    const fs::directory_iterator folder(argv[2]);
    std::vector<fs::path> files(begin(folder), end(folder));
    std::ranges::sort(files);
    for (const fs::path& file : files)
        replay(*target, file);
    return files.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
