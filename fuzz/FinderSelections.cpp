#include "core/clipboard/FinderSelectionParse.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <set>

namespace velmo::Fuzz {

namespace {

using namespace FinderSelectionParse;

void requireClean(const std::string& path) {
    require(path.starts_with('/') && (path.size() == 1 || !path.ends_with('/')));
    require(Text::isValidUtf8(path) && !Text::hasMoreCharactersThan(path, 4096));
    require(!(path + "/").contains("/../"));
    require(std::ranges::none_of(bytesOf(path),
                                 [](std::uint8_t byte) { return byte < 0x20 || byte == 0x7F; }));
    require(clean(path) == path);
}

/// The input is lines, which are read twice: as a selection, the folder first, and as the
/// identities of files.
void checkFinderSelections(Input input) {
    const auto lines = input.words();
    const std::string folder = lines.empty() ? "" : lines.front();
    const Selection selected = selection(folder, lines);
    const std::set<std::string> distinct(selected.items.begin(), selected.items.end());
    require(distinct.size() == selected.items.size() && distinct.size() <= maxItems);
    require(!selected.folder || distinct.contains(*selected.folder));
    std::ranges::for_each(selected.items, requireClean);

    const auto lstat = [](std::string_view path) {
        return FileIdentity{.device = path.size(), .inode = 7};
    };
    const auto check = identityPaths(lines, lstat);
    const auto* const ok = std::get_if<Ok>(&check);
    if (ok == nullptr)
        return;
    require(ok->paths.size() == lines.size() && lines.size() <= maxItems);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        requireClean(ok->paths[i]);
        require(lines[i].ends_with(":" + ok->paths[i]));
    }
}

const Target finderSelectionsTarget("FinderSelections", checkFinderSelections);

} // namespace

} // namespace velmo::Fuzz
