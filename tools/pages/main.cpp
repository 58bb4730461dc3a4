/// velmo-pages TEMPLATES FOLDER PROGRAM...: writes the manual pages of these programs of ours, and
/// their completions for bash, zsh and fish, into a folder laid out as a "share" folder is. Prose
/// and scripts come from TEMPLATES, the lists of options from the programs' own tables.

#include "tools/command-line/CommandLine.h"
#include "tools/pages/Completion.h"
#include "tools/pages/ManualPage.h"
#include "tools/pages/Template.h"
#include "tools/simulated-daemon/DaemonCommandLine.h"
#include "tools/velmo-mac/MacCommandLine.h"
#include "tools/velmo-phone/PhoneCommandLine.h"
#include "tools/velmo-power/PowerCommandLine.h"
#include "tools/velmo-session/SessionCommandLine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace velmo;

namespace fs = std::filesystem;

constexpr std::array programs{&macCommandLine, &phoneCommandLine, &powerCommandLine,
                              &sessionCommandLine, &daemonCommandLine};

/// Writes one page. Returns false, and says so, if its template is missing or has other marks.
bool writePage(const fs::path& from, const fs::path& to, const Pages::Marks& marks) {
    std::ifstream stream(from, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const auto page = text.empty() ? std::nullopt : Pages::filled(text, marks);
    fs::create_directories(to.parent_path());
    if (page && std::ofstream(to, std::ios::binary) << *page << std::flush)
        return true;
    std::cerr << "velmo-pages: can't make " << to << " of " << from << "\n";
    return false;
}

bool writePages(const fs::path& templates, const fs::path& folder,
                const CommandLine::Program& program) {
    const std::string name(program.name);
    const std::string manual = name + ".1";
    return writePage(templates / manual, folder / "man/man1" / manual, Pages::manualMarks(program))
           && writePage(templates / "completion.bash",
                        folder / "bash-completion/completions" / name, Pages::bashMarks(program))
           && writePage(templates / "completion.zsh", folder / "zsh/site-functions" / ("_" + name),
                        Pages::zshMarks(program))
           && writePage(templates / "completion.fish",
                        folder / "fish/vendor_completions.d" / (name + ".fish"),
                        Pages::fishMarks(program));
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 4)
        return EXIT_FAILURE;
    for (const std::string_view name : std::span(argv + 3, argv + argc)) {
        const auto* const program = std::ranges::find(programs, name, &CommandLine::Program::name);
        if (program == programs.end() || !writePages(argv[1], argv[2], **program))
            return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
