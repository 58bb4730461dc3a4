#include "core/terminal/DevTerminal.h"

#include "tests/core/terminal/Lines.h"

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

namespace velmo {
namespace {

using namespace DevTerminal;
using testing::ElementsAre;
using Args = std::vector<std::string>;

/// A disk on which every absolute path is its own resolved form, but for these.
std::optional<std::string> resolve(std::string_view path) {
    static const std::map<std::string, std::optional<std::string>, std::less<>> links{
        {"/home/me", "/Users/me"},
        {"/Users/me/dev/out", "/etc/out"},
        {"/Users/me/dev/keys", "/Users/me/.ssh/keys"},
        {"/Users/me/dev/loop", std::nullopt}};
    if (const auto link = links.find(path); link != links.end())
        return link->second;
    return path.starts_with('/') ? std::optional<std::string>(path) : std::nullopt;
}

std::optional<OpenRequest> parse(const Args& args) {
    return parseOpen(args, "/Users/me", "/T/velmo-term", "/Applications/Velmo", resolve);
}

const OpenRequest typed{.app = App::terminal, .cwd = "/Users/me/it's", .command = Tool{"codex"}};

OpenRequest executed(App app) {
    return {.app = app,
            .cwd = "/Users/me/a \"b\"",
            .command = Tool{"claude"},
            .exec = true,
            .toolPath = "/opt/bin/claude"};
}

TEST(DevTerminal, QuotesForTheShellAndForAppleScript) {
    EXPECT_EQ(shellQuote("it's"), R"('it'\''s')");
    EXPECT_EQ(shellQuote(""), "''");
    EXPECT_EQ(shellQuote("$(x) `y` \\ \"\n"), "'$(x) `y` \\ \"\n'");
    EXPECT_EQ(appleScriptString(R"(a\"b)"), R"("a\\\"b")");
    EXPECT_EQ(appleScriptString(shellQuote("'")), R"("''\\'''")");
}

TEST(DevTerminal, WritesTheLineForAShell) {
    const OpenRequest ssh = OpenRequest::ofSsh(App::terminal, {"me@host", {}}, false);
    const OpenRequest port = OpenRequest::ofSsh(App::terminal, {"host", 2222}, false);
    const OpenRequest attach =
        OpenRequest::ofAttach(App::terminal, {"/T/a b.json"}, "/A/Velmo", false);
    OpenRequest bare = executed(App::iterm);
    bare.cwd.reset();
    bare.toolPath.reset();
    const std::tuple<OpenRequest, std::string, std::string> cases[] = {
        {typed, R"(cd '/Users/me/it'\''s' && codex)",
         R"sh(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo '/Users/me/it'\''s' 'codex')sh"},
        {executed(App::iterm), R"(cd -- '/Users/me/a "b"' && exec '/opt/bin/claude'; exit)",
         R"sh(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo '/Users/me/a "b"' '/opt/bin/claude')sh"},
        {bare, "cd -- '' && exec 'claude'; exit",
         R"sh(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo '' 'claude')sh"},
        {ssh, "exec ssh -- 'me@host'; exit", "/usr/bin/ssh -- 'me@host'"},
        {port, "exec ssh -p 2222 -- 'host'; exit", "/usr/bin/ssh -p 2222 -- 'host'"},
        {attach, "exec '/A/Velmo' pty-attach --ticket-file '/T/a b.json'",
         "'/A/Velmo' pty-attach --ticket-file '/T/a b.json'"},
    };
    for (const auto& [request, shell, iterm] : cases) {
        EXPECT_EQ(shellCommand(request), shell);
        EXPECT_EQ(itermCommand(request), iterm);
    }
    OpenRequest withPath = typed;
    withPath.toolPath = "/opt/bin/codex";
    EXPECT_EQ(shellCommand(withPath), shellCommand(typed)); // a typed tool is found by the shell
}

TEST(DevTerminal, WritesScriptsByteForByte) {
    const std::string command = R"("cd '/Users/me/it'\\''s' && codex")";
    EXPECT_EQ(
        openScript(typed),
        "set wasRunning to application id \"com.apple.Terminal\" is running\n"
        "tell application id \"com.apple.Terminal\"\n"
        "    if wasRunning then\n"
        "        do script "
            + command
            + "\n"
              "    else\n"
              "        -- Launching Terminal opens a window already: use it instead of a second "
              "one.\n"
              "        repeat 30 times\n"
              "            if (count of windows) > 0 then exit repeat\n"
              "            delay 0.1\n"
              "        end repeat\n"
              "        if (count of windows) > 0 then\n"
              "            do script "
            + command
            + " in window 1\n"
              "        else\n"
              "            do script "
            + command
            + "\n"
              "        end if\n"
              "    end if\n"
              "    activate\n"
              "end tell");
    OpenRequest request = typed;
    request.app = App::iterm;
    EXPECT_EQ(openScript(request), "tell application id \"com.googlecode.iterm2\"\n"
                                   "    activate\n"
                                   "    set newWindow to (create window with default profile)\n"
                                   "    tell current session of newWindow to write text "
                                       + command
                                       + "\n"
                                         "end tell");
    EXPECT_EQ(openScript(OpenRequest::ofSsh(App::iterm, {"h", 22}, true)),
              "tell application id \"com.googlecode.iterm2\"\n"
              "    activate\n"
              "    create window with default profile command \"/usr/bin/ssh -p 22 -- 'h'\"\n"
              "end tell");
    request.app = App::ghostty;
    EXPECT_FALSE(openScript(request));
    // What looks like a mark of ours in a folder's name is only text.
    request = typed;
    request.cwd = "{command}";
    EXPECT_TRUE(openScript(request)->contains("do script \"cd '{command}' && codex\"\n"));
}

TEST(DevTerminal, WritesFocusScriptsByteForByte) {
    EXPECT_EQ(terminalFocusScript("/dev/ttys003"),
              "tell application id \"com.apple.Terminal\"\n"
              "    repeat with w in windows\n"
              "        repeat with t in tabs of w\n"
              "            if tty of t is \"/dev/ttys003\" then\n"
              "                set selected of t to true\n"
              "                set index of w to 1\n"
              "                activate\n"
              "                return \"ok\"\n"
              "            end if\n"
              "        end repeat\n"
              "    end repeat\n"
              "end tell\n"
              "return \"missing\"");
    EXPECT_EQ(itermFocusScript("/dev/ttys1234"),
              "tell application id \"com.googlecode.iterm2\"\n"
              "    repeat with w in windows\n"
              "        repeat with t in tabs of w\n"
              "            repeat with s in sessions of t\n"
              "                if tty of s is \"/dev/ttys1234\" then\n"
              "                    select w\n"
              "                    tell t to select\n"
              "                    tell s to select\n"
              "                    activate\n"
              "                    return \"ok\"\n"
              "                end if\n"
              "            end repeat\n"
              "        end repeat\n"
              "    end repeat\n"
              "end tell\n"
              "return \"missing\"");
    for (const char* refused : {"", "/dev/ttys", "/dev/ttys12345", "/dev/tty1", "/dev/ttys1\n",
                                "/dev/ttysa", "x/dev/ttys1", "/dev/ttys1\""}) {
        EXPECT_FALSE(isTty(refused)) << refused;
        EXPECT_FALSE(terminalFocusScript(refused)) << refused;
        EXPECT_FALSE(itermFocusScript(refused)) << refused;
    }
}

TEST(DevTerminal, ArgumentsDriveGhostty) {
    EXPECT_THAT(ghosttyArguments(executed(App::ghostty)),
                ElementsAre("-na", "Ghostty", "--args", "--working-directory=/Users/me/a \"b\"",
                            "-e", "/opt/bin/claude"));
    EXPECT_THAT(
        ghosttyArguments(OpenRequest::ofSsh(App::ghostty, {"h", {}}, true)),
        ElementsAre("-na", "Ghostty", "--args", "--fullscreen=true", "-e", "ssh", "--", "h"));
    EXPECT_THAT(ghosttyArguments(OpenRequest::ofSsh(App::ghostty, {"h", 22}, false)),
                ElementsAre("-na", "Ghostty", "--args", "-e", "ssh", "-p", "22", "--", "h"));
    EXPECT_THAT(
        ghosttyArguments(OpenRequest{.app = App::ghostty, .command = Attach{"/t"}}),
        ElementsAre("-na", "Ghostty", "--args", "-e", "", "pty-attach", "--ticket-file", "/t"));
}

TEST(DevTerminal, TellsToolAndProgram) {
    EXPECT_EQ(executed(App::iterm).tool(), "claude");
    EXPECT_EQ(executed(App::iterm).program(), "/opt/bin/claude");
    EXPECT_EQ(typed.program(), "codex");
    EXPECT_FALSE(OpenRequest::ofSsh(App::iterm, {"h", {}}, false).tool());
    EXPECT_EQ(OpenRequest::ofSsh(App::iterm, {"h", {}}, false).program(), "ssh");
    EXPECT_EQ(OpenRequest::ofAttach(App::iterm, {"/t"}, "/v", false).program(), "/v");
    for (const App app : allApps)
        EXPECT_EQ(fromRawText<App>(rawText(app)), app);
    EXPECT_EQ(bundleIdentifier(App::ghostty), "com.mitchellh.ghostty");
}

TEST(DevTerminal, ParsesWhatMayBeOpened) {
    const std::pair<std::string, OpenRequest> cases[] = {
        {"--app Terminal --cwd /Users/me/dev/app --tool agy",
         {.app = App::terminal, .cwd = "/Users/me/dev/app", .command = Tool{"agy"}}},
        {"--tool-path /o/codex --exec 1 --fullscreen 1 --tool codex --cwd /Users/me/d/ --app "
         "iTerm2",
         {.app = App::iterm,
          .cwd = "/Users/me/d/",
          .command = Tool{"codex"},
          .fullscreen = true,
          .exec = true,
          .toolPath = "/o/codex"}},
        {"--app Ghostty --ssh-target me@h --ssh-port 65535 --fullscreen 1",
         OpenRequest::ofSsh(App::ghostty, {"me@h", 65535}, true)},
        {"--app Terminal --attach-file /T/velmo-term/x",
         OpenRequest::ofAttach(App::terminal, {"/T/velmo-term/x"}, "/Applications/Velmo", false)},
    };
    for (const auto& [line, request] : cases)
        EXPECT_EQ(parse(words(line)), request) << line;
}

TEST(DevTerminal, OpensNothingElse) {
    const auto expectRefused = [](const std::string& base,
                                  std::initializer_list<const char*> more) {
        for (const char* refused : more)
            EXPECT_FALSE(parse(words(base + " " + refused))) << base << " " << refused;
    };
    expectRefused(
        "", {"", "--app", "--app Terminal", "--ssh-target h", "--app terminal --ssh-target h"});
    expectRefused("--app Terminal",
                  {"--cwd /Users/me/dev --tool zsh", "--cwd /Users/me/dev", "--tool codex",
                   "--cwd /Users/me --tool codex", "--cwd dev --tool codex",
                   "--cwd /Users/me/dev/../x --tool codex", "--cwd /Users/me/dev/out --tool codex",
                   "--ssh-target h@", "--ssh-target -- --tool", "--attach-file /T/velmo-term/a/x",
                   "--attach-file /T/velmo-term"});
    expectRefused("--app Terminal --cwd /Users/me/dev --tool codex",
                  {"--app Terminal", "--verbose 1", "--exec", "--exec 0", "--fullscreen true",
                   "--ssh-port 22", "--tool-path /opt/bin/claude", "--tool-path /opt/bin/codex/",
                   "--tool-path bin/codex", "--tool-path /opt/../codex"});
    expectRefused("--app Terminal --ssh-target h",
                  {"--cwd /Users/me/dev", "--tool codex", "--tool-path /opt/codex", "--exec 1",
                   "--ssh-port 0", "--ssh-port 65536"});
    const std::string attach = "--app Terminal --attach-file /T/velmo-term/x";
    expectRefused(attach, {"--cwd /Users/me/dev", "--exec 1", "--ssh-target h"});

    for (const char* executable : {"", "Velmo", "/A/Velmo/", "/A/./V"})
        EXPECT_FALSE(parseOpen(words(attach), "/Users/me", "/T/velmo-term", executable, resolve))
            << executable;
    EXPECT_FALSE(parseOpen(words(attach), "/Users/me", "/T/velmo-term", std::nullopt, resolve));
    EXPECT_FALSE(parseOpen(words(attach), "/Users/me", std::nullopt, "/V", resolve));
}

TEST(DevTerminal, ParsesWhatToFocus) {
    EXPECT_EQ(parseFocus(words("--pid 1")), FocusRequest{.pid = 1});
    EXPECT_EQ(parseFocus(words("--tty /dev/ttys001 --pid 2147483647")),
              (FocusRequest{.pid = 2147483647, .tty = "/dev/ttys001"}));
    for (const char* refused :
         {"", "--pid", "--pid 2147483648", "--pid 99999999999999999999", "--pid 0", "--pid 01",
          "--pid -1", "--pid +1", "--pid 1 --pid 1", "--pid 1 --tty ttys001", "--tty /dev/ttys001"})
        EXPECT_FALSE(parseFocus(words(refused))) << refused;
}

TEST(DevTerminal, AllowsFoldersStrictlyInsideHome) {
    for (const char* path : {"/Users/me/dev", "/Users/me/dev/app/", "/users/ME/dev/app",
                             "/Users/me/dev/library", "/Users/me/library2", "/Users/me/.github",
                             "/Users/me/.npm-global/x", "/Users/me/dev/.config"}) {
        EXPECT_TRUE(isAllowedFolder(path, "/Users/me", resolve)) << path;
        EXPECT_TRUE(isAllowedFolder(path, "/home/me", resolve)) << path;
    }
    // Out of the home folder or not strictly inside; by way of a link; denied in any letter case,
    // also by what a disk without letter case takes for the same name (ſ, the Kelvin sign).
    for (const char* path : {"/Users/me",
                             "/Users/me/",
                             "/Users/meagain/dev",
                             "/Users",
                             "/",
                             "",
                             "Users/me/dev",
                             "/Users/me/dev/..",
                             "/Users/me/./dev",
                             "/Users/me/dev/out",
                             "/Users/me/dev/keys",
                             "/Users/me/dev/loop",
                             "/Users/me/LIBRARY/x",
                             "/Users/me/Library",
                             "/Users/me/.Claude/x",
                             "/Users/me/appdata",
                             "/Users/me/dev/app/.git",
                             "/Users/me/dev/.GIT/hooks",
                             "/Users/me/dev/Keychains",
                             "/Users/me/.\u017Fsh",
                             "/Users/me/.doc\u212Aer",
                             "/Users/me/\xFF"})
        EXPECT_FALSE(isAllowedFolder(path, "/Users/me", resolve)) << path;

    // Lower case of another length; bytes that would be repaired alike; homes that are none.
    EXPECT_TRUE(isAllowedResolvedFolder("/Users/\u0130/ı/app", "/Users/i\u0307/ı"));
    EXPECT_TRUE(isAllowedResolvedFolder("/a/b", "/a/"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/\xFE/dev", "/Users/\xFF"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/me/dev/../../x", "/Users/me"));
    for (const char* home : {"/", "", "dev"})
        EXPECT_FALSE(isAllowedResolvedFolder("/dev/app", home)) << home;
}

TEST(DevTerminal, TargetsPortsAndAttachFiles) {
    for (const char* target : {"h", "me@h", "-x", "a_b.c-d@e.f"})
        EXPECT_TRUE(isSshTarget(target)) << target;
    for (const char* target : {"", "@h", "me@", "a@b@c", "[::1]", "h:22", "h\n", "é", "a b"})
        EXPECT_FALSE(isSshTarget(target)) << target;

    EXPECT_EQ(sshPort("1"), 1);
    EXPECT_EQ(sshPort("65535"), 65535);
    for (const char* port : {"", "0", "022", "65536", "99999", "100000", "+22", "22 "})
        EXPECT_FALSE(sshPort(port)) << port;

    EXPECT_TRUE(isAttachFile("/T/f", "/T"));
    EXPECT_TRUE(isAttachFile("/T/f", "/T/"));
    for (const char* file : {"/T/f/", "/T/s/f", "/t/f", "/T", "/Tf", "/T/../T/f", "/T//f", "T/f"})
        EXPECT_FALSE(isAttachFile(file, "/T")) << file;
    EXPECT_FALSE(isAttachFile("/f", ""));
    EXPECT_FALSE(isAttachFile("/f", "/"));
    EXPECT_FALSE(isAttachFile("/T/f", std::nullopt));
}

} // namespace
} // namespace velmo
