#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"
#include "core/terminal/PtyFrame.h"
#include "fuzz/Fuzz.h"
#include "lab/instruments/FakeDisk.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

const FakeDisk& disk() {
    static const FakeDisk disk = [] {
        FakeDisk made;
        for (const char* folder : {"/Users/me/dev/app", "/Users/me/.ssh", "/tmp", "/open"})
            made.addFolder(folder);
        for (const char* program :
             {"/bin/zsh", "/usr/bin/ssh", "/opt/tools/claude", "/opt/tools/codex", "/bin/tmux",
              "/opt/tools/opencode", "/opt/tools/agy", "/opt/tools/velmo-pty-fixture",
              "/opt/node/bin/node", "/tmp/claude", "/open/claude"})
            made.addProgram(program);
        made.link("/opt/scripts/claude", "/opt/node/bin/node");
        made.link("/Users/me/dev/keys", "/Users/me/.ssh");
        made.writable.insert("/open");
        return made;
    }();
    return disk;
}

void requireLimits(const SpawnRequest& request) {
    constexpr std::string_view home = "/Users/me";
    require(PtyFrame::validSize(request.cols, request.rows));
    require(disk().isDirectory(request.cwd) && disk().isExecutable(request.program));
    require(request.cwd == home || DevTerminal::isAllowedResolvedFolder(request.cwd, home));
    require(Pty::isTrustedProgram(request.argv.front(), request.program, {}, disk()));
    require(request.argv.size() <= Pty::maxArguments + 1);
    require(std::ranges::all_of(request.argv, [](const std::string& word) {
        return word.size() <= Pty::maxArgumentLength && !word.contains('\0')
               && Text::isValidUtf8(word);
    }));
    const std::string_view name =
        std::string_view(request.program).substr(request.program.rfind('/') + 1);
    require(Text::isOneOf(name, Pty::shells) || !Pty::isInterpreter(name));
}

/// The first byte says whether the environment allows the test fixture; then come the words.
void checkSpawnWords(Input input) {
    Pty::Environment environment{{"HOME", "/Users/me"}, {"TMPDIR", "/tmp"}};
    const bool test = input.flag();
    if (test)
        environment.emplace(Pty::testEnvironmentKey, "1");
    const auto words = input.words();
    const auto request = Pty::parseSpawn(words, environment, disk());
    if (!request)
        return;
    requireLimits(*request);
    require(test || !request->program.ends_with(Pty::testFixture));

    const bool fromCommandLine =
        std::ranges::find(words, "--origin") < std::ranges::find(words, "--");
    std::vector<std::string> again{"--cwd",  request->cwd,
                                   "--rows", std::to_string(request->rows),
                                   "--cols", std::to_string(request->cols)};
    if (fromCommandLine)
        again.insert(again.end(), {"--origin", "cli"});
    again.emplace_back("--");
    again.insert(again.end(), request->argv.begin(), request->argv.end());
    require(Pty::parseSpawn(again, environment, disk()) == request);
}

const Target spawnWordsTarget("SpawnWords", checkSpawnWords);

} // namespace

} // namespace velmo::Fuzz
