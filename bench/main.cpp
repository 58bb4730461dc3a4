/// velmo-bench FOLDER [options of Google Benchmark] measures our functions beside those of other
/// libraries, prints the tables, and writes them to benchmarks.md and benchmarks.svg in the folder.

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
    suite.begin("What a user feels");
    addDaemon(suite);
    addEcho(suite);
    addInput(suite);
    addTextChunks(suite);
    addSignature(suite);
    addInventory(suite);
    suite.begin("The rest");
    addFrames(suite);
    addOutput(suite);
    addCapture(suite);
    addClipboard(suite);
    addHolds(suite);
    if (!suite.run(argc - 1, argv + 1))
        return 2;
    std::cout << suite.markdown();
    std::ofstream(folder / "benchmarks.md")
        << "# Beside its peers\n\n"
           "Written by `make bench`: medians of nine interleaved repetitions of one run, on one\n"
           "machine; look at the ratios, not at the times. An aim of 0.5 says that ours may take\n"
           "twice as long as what it is beside. The aim \"beside\" says as fast as the peer, "
           "within\n"
           "what noise decides. In the picture a red bar misses its aim, and a paler one has a "
           "peer\n"
           "that does less of the work, as the words in brackets say.\n\n![The ratios as "
           "bars](benchmarks.svg)\n\n"
        << suite.markdown() << '\n';
    std::ofstream(folder / "benchmarks.svg") << suite.svg();
    return 0;
}
