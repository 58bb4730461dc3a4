#include "sessions/SpawnRefusal.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/AllowedFolder.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::string_view separator = "--";

bool isAllowedFolder(std::string_view folder, bool mayBeHome, const Pty::Environment& environment,
                     const Pty::FileSystem& files) {
    const auto resolved = files.realpath(folder);
    const auto given = files.home(environment);
    const auto home = given ? files.realpath(*given) : std::nullopt;
    return resolved && home && files.isDirectory(*resolved)
           && ((mayBeHome && *resolved == *home)
               || DevTerminal::isAllowedResolvedFolder(*resolved, *home));
}

} // namespace

SessionRefusal refusalOf(Pty::Words words, const Pty::Environment& environment,
                         const Pty::FileSystem& files) {
    const auto end = std::ranges::find(words, separator);
    if (end == words.end() || end + 1 == words.end())
        return SessionRefusal::words;
    const std::string_view tool = PathText::lastComponent(*(end + 1));
    const bool isShell = Text::isOneOf(tool, Pty::shells);
    if (!isShell && !Text::isOneOf(tool, Pty::tools) && tool != Pty::testFixture)
        return SessionRefusal::program;
    const auto folder = std::find(words.begin(), end, "--cwd");
    if (folder == end || folder + 1 == end)
        return SessionRefusal::words;
    if (!isAllowedFolder(*(folder + 1), isShell || tool == "ssh", environment, files))
        return SessionRefusal::folder;
    const Pty::Words arguments = words.subspan(static_cast<std::size_t>(end - words.begin()) + 2);
    const bool isFree =
        tool == Pty::testFixture || std::find(words.begin(), end, "--origin") != end;
    const bool permitted = isFree || (isShell && Pty::isShellArguments(tool, arguments))
                           || (tool == "ssh" && Pty::isSshArguments(arguments))
                           || Pty::isAgentArguments(tool, arguments);
    return permitted ? SessionRefusal::program : SessionRefusal::words;
}

} // namespace velmo
