/// Stands in for the fuzzer where there is none: hands each file of the folders that it is given to
/// the target, once. A finding ends the process.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    std::cerr << path.filename().string() << '\n'; // the last one named is the finding
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> folders(argv + 1, argv + argc);
    std::vector<fs::path> files;
    for (const fs::path& folder : folders) {
        for (const auto& entry : fs::directory_iterator(folder))
            files.push_back(entry.path());
    }
    std::ranges::sort(files);
    std::ranges::for_each(files, replay);
    return files.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
