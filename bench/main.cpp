/// velmo-bench FOLDER [options of Google Benchmark]: measures everything beside its peers and its
/// limits, prints the table, and writes it as benchmarks.md and benchmarks.svg into the folder.

#include "bench/Suite.h"

#include <filesystem>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "velmo-bench FOLDER [options]\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];

    velmo::bench::Suite suite;
    addFrames(suite);
    addInput(suite);
    addTextChunks(suite);
    if (!suite.run(argc - 1, argv + 1))
        return 2;
    std::cout << suite.markdown();
    std::ofstream(folder / "benchmarks.md") << suite.markdown();
    std::ofstream(folder / "benchmarks.svg") << suite.svg();
    return 0;
}
