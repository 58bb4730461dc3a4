/// velmo-pages FOLDER: writes the manual pages of our programs, and their completions for bash, zsh
/// and fish, into a folder laid out as a "share" folder is.

#include "tools/command-line/CommandLine.h"
#include "tools/velmo-mac/MacCommandLine.h"
#include "tools/velmo-power/PowerCommandLine.h"
#include "tools/velmo-session/SessionCommandLine.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using namespace velmo;

constexpr std::array programs{&macCommandLine, &powerCommandLine, &sessionCommandLine};

bool write(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    return static_cast<bool>(std::ofstream(path, std::ios::binary) << text << std::flush);
}

bool writePages(const std::filesystem::path& folder, const CommandLine::Program& program) {
    using CommandLine::Shell;
    const std::string name(program.name);
    return write(folder / "man/man1" / (name + ".1"), CommandLine::manualPage(program))
           && write(folder / "bash-completion/completions" / name,
                    CommandLine::completion(program, Shell::bash))
           && write(folder / "zsh/site-functions" / ("_" + name),
                    CommandLine::completion(program, Shell::zsh))
           && write(folder / "fish/vendor_completions.d" / (name + ".fish"),
                    CommandLine::completion(program, Shell::fish));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return EXIT_FAILURE;
    for (const CommandLine::Program* const program : programs) {
        if (!writePages(argv[1], *program))
            return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
