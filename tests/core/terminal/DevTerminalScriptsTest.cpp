#include "core/terminal/DevTerminalScripts.h"

#include "tests/Texts.h"

#include <fstream>
#include <iterator>

namespace velmo {
namespace {

using namespace DevTerminal;

const OpenRequest typed{
    .cwd = "/it's \"x\"", .command = Tool{"codex"}, .toolPath = "/opt/bin/codex"};

TEST(DevTerminalScripts, EveryCommandHasALineForEachApplication) {
    const std::string launcher =
        R"sh(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo )sh";
    const std::string attach = "'/A/Velmo' pty-attach --ticket-file '/T/a b.json'";

    const struct {
        OpenRequest request;
        std::string shell; ///< typed
        std::string iterm; ///< executed
        Strings ghostty;
    } cases[] = {
        {.request = typed, // the shell finds a typed tool by its name
         .shell = R"(cd '/it'\''s "x"' && codex)",
         .iterm = launcher + R"('/it'\''s "x"' '/opt/bin/codex')",
         .ghostty = {"--working-directory=/it's \"x\"", "-e", "/opt/bin/codex"}},
        {.request = {.cwd = "/a", .command = Tool{"agy"}, .exec = true, .toolPath = "/b/agy"},
         .shell = R"(cd -- '/a' && exec '/b/agy'; exit)",
         .iterm = launcher + R"('/a' '/b/agy')",
         .ghostty = words("--working-directory=/a -e /b/agy")},
        {.request = {.command = Tool{"claude"}, .fullscreen = true, .exec = true},
         .shell = "cd -- '' && exec 'claude'; exit",
         .iterm = launcher + "'' 'claude'",
         .ghostty = words("--fullscreen=true --working-directory= -e claude")},
        {.request = OpenRequest::ofSsh(App::terminal, {.target = "me@host", .port = {}}, true),
         .shell = "exec ssh -- 'me@host'; exit",
         .iterm = "/usr/bin/ssh -- 'me@host'",
         .ghostty = words("--fullscreen=true -e ssh -- me@host")},
        {.request = OpenRequest::ofSsh(App::terminal, {.target = "host", .port = 2222}, false),
         .shell = "exec ssh -p 2222 -- 'host'; exit",
         .iterm = "/usr/bin/ssh -p 2222 -- 'host'",
         .ghostty = words("-e ssh -p 2222 -- host")},
        {.request = OpenRequest::ofAttach(App::terminal, {"/T/a b.json"}, "/A/Velmo", false),
         .shell = "exec " + attach,
         .iterm = attach,
         .ghostty = {"-e", "/A/Velmo", "pty-attach", "--ticket-file", "/T/a b.json"}},
    };

    for (const auto& [request, shell, iterm, ghostty] : cases) {
        EXPECT_EQ(shellCommand(request), shell);
        EXPECT_EQ(itermCommand(request), iterm);
        EXPECT_EQ(ghosttyArguments(request), joined({"-na", "Ghostty", "--args"}, ghostty));
    }
}

/// A script as it must be, from a file.
std::string script(const std::string& name) {
    std::ifstream file(VELMO_SCRIPTS "/" + name + ".applescript");
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(DevTerminalScripts, AreWhatTheFilesSayByteForByte) {
    OpenRequest request = typed;
    EXPECT_EQ(openScript(request).value() + '\n', script("terminal-open"));
    request.app = App::iterm;
    EXPECT_EQ(openScript(request).value() + '\n', script("iterm-type"));
    request = OpenRequest::ofSsh(App::iterm, {.target = "h", .port = 22}, true);
    EXPECT_EQ(openScript(request).value() + '\n', script("iterm-execute"));
    EXPECT_EQ(terminalFocusScript("/dev/ttys003").value() + '\n', script("terminal-focus"));
    EXPECT_EQ(itermFocusScript("/dev/ttys1234").value() + '\n', script("iterm-focus"));
    expectRefused(terminalFocusScript, {"", "/dev/tty1"});
    expectRefused(itermFocusScript, {"", "/dev/tty1"});
    EXPECT_FALSE(openScript({.app = App::ghostty, .command = Tool{"codex"}}));
    // What looks like a mark of ours in a folder's name is only text.
    request = {.cwd = "{command}", .command = Tool{"codex"}};
    EXPECT_TRUE(openScript(request)->contains("do script \"cd '{command}' && codex\"\n"));
}

} // namespace
} // namespace velmo
