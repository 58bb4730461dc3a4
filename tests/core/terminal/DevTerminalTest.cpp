#include "core/terminal/DevTerminal.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <map>

namespace velmo {
namespace {

using namespace DevTerminal;

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

std::optional<OpenRequest> parse(const std::string& line) {
    return parseOpen(words(line), "/Users/me", "/T/velmo-term", "/Applications/Velmo", resolve);
}

OpenRequest typed(App app) {
    return {.app = app, .cwd = "/Users/me/it's", .command = Tool{"codex"}};
}

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
    const std::string launcher =
        R"sh(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo )sh";
    const std::string attach = "'/A/Velmo' pty-attach --ticket-file '/T/a b.json'";
    const OpenRequest bare{.command = Tool{"claude"}, .exec = true};
    const std::tuple<OpenRequest, std::string, std::string> cases[] = {
        {typed(App::terminal), R"(cd '/Users/me/it'\''s' && codex)",
         launcher + R"('/Users/me/it'\''s' 'codex')"},
        {executed(App::iterm), R"(cd -- '/Users/me/a "b"' && exec '/opt/bin/claude'; exit)",
         launcher + R"('/Users/me/a "b"' '/opt/bin/claude')"},
        {bare, "cd -- '' && exec 'claude'; exit", launcher + "'' 'claude'"},
        {OpenRequest::ofSsh(App::terminal, {"me@host", {}}, false), "exec ssh -- 'me@host'; exit",
         "/usr/bin/ssh -- 'me@host'"},
        {OpenRequest::ofSsh(App::terminal, {"host", 2222}, false),
         "exec ssh -p 2222 -- 'host'; exit", "/usr/bin/ssh -p 2222 -- 'host'"},
        {OpenRequest::ofAttach(App::terminal, {"/T/a b.json"}, "/A/Velmo", false), "exec " + attach,
         attach},
    };
    for (const auto& [request, shell, iterm] : cases) {
        EXPECT_EQ(shellCommand(request), shell);
        EXPECT_EQ(itermCommand(request), iterm);
    }
    OpenRequest withPath = typed(App::terminal);
    withPath.toolPath = "/opt/bin/codex"; // a typed tool is found by the shell
    EXPECT_EQ(shellCommand(withPath), shellCommand(typed(App::terminal)));
}

TEST(DevTerminal, WritesScriptsByteForByte) {
    EXPECT_EQ(openScript(typed(App::terminal)),
              R"(set wasRunning to application id "com.apple.Terminal" is running
tell application id "com.apple.Terminal"
    if wasRunning then
        do script "cd '/Users/me/it'\\''s' && codex"
    else
        -- Launching Terminal opens a window already: use it instead of a second one.
        repeat 30 times
            if (count of windows) > 0 then exit repeat
            delay 0.1
        end repeat
        if (count of windows) > 0 then
            do script "cd '/Users/me/it'\\''s' && codex" in window 1
        else
            do script "cd '/Users/me/it'\\''s' && codex"
        end if
    end if
    activate
end tell)");
    EXPECT_EQ(openScript(typed(App::iterm)), R"(tell application id "com.googlecode.iterm2"
    activate
    set newWindow to (create window with default profile)
    tell current session of newWindow to write text "cd '/Users/me/it'\\''s' && codex"
end tell)");
    EXPECT_EQ(openScript(OpenRequest::ofSsh(App::iterm, {"h", 22}, true)),
              R"(tell application id "com.googlecode.iterm2"
    activate
    create window with default profile command "/usr/bin/ssh -p 22 -- 'h'"
end tell)");
    EXPECT_FALSE(openScript(typed(App::ghostty)));
    // What looks like a mark of ours in a folder's name is only text.
    OpenRequest marked = typed(App::terminal);
    marked.cwd = "{command}";
    EXPECT_TRUE(openScript(marked)->contains("do script \"cd '{command}' && codex\"\n"));
}

TEST(DevTerminal, WritesFocusScriptsByteForByte) {
    EXPECT_EQ(terminalFocusScript("/dev/ttys003"), R"(tell application id "com.apple.Terminal"
    repeat with w in windows
        repeat with t in tabs of w
            if tty of t is "/dev/ttys003" then
                set selected of t to true
                set index of w to 1
                activate
                return "ok"
            end if
        end repeat
    end repeat
end tell
return "missing")");
    EXPECT_EQ(itermFocusScript("/dev/ttys1234"), R"(tell application id "com.googlecode.iterm2"
    repeat with w in windows
        repeat with t in tabs of w
            repeat with s in sessions of t
                if tty of s is "/dev/ttys1234" then
                    select w
                    tell t to select
                    tell s to select
                    activate
                    return "ok"
                end if
            end repeat
        end repeat
    end repeat
end tell
return "missing")");
    const Strings refused{
        "",           "/dev/ttys",   "/dev/ttys12345", "/dev/tty1", "/dev/ttys1\n",
        "/dev/ttysa", "x/dev/ttys1", "/dev/ttys1\""};
    expectRefused(isTty, refused);
    expectRefused(terminalFocusScript, refused);
    expectRefused(itermFocusScript, refused);
}

TEST(DevTerminal, ArgumentsDriveGhostty) {
    const std::pair<OpenRequest, Strings> cases[] = {
        {executed(App::ghostty),
         {"--working-directory=/Users/me/a \"b\"", "-e", "/opt/bin/claude"}},
        {OpenRequest::ofSsh(App::ghostty, {"h", {}}, true), words("--fullscreen=true -e ssh -- h")},
        {OpenRequest::ofSsh(App::ghostty, {"h", 22}, false), words("-e ssh -p 22 -- h")},
        {OpenRequest::ofAttach(App::ghostty, {"/t"}, "", false),
         {"-e", "", "pty-attach", "--ticket-file", "/t"}},
    };
    for (const auto& [request, arguments] : cases)
        EXPECT_EQ(ghosttyArguments(request), joined({"-na", "Ghostty", "--args"}, arguments));
}

TEST(DevTerminal, TellsToolAndProgram) {
    const OpenRequest ssh = OpenRequest::ofSsh(App::iterm, {"h", {}}, false);
    EXPECT_EQ(executed(App::iterm).tool(), "claude");
    EXPECT_EQ(executed(App::iterm).program(), "/opt/bin/claude");
    EXPECT_EQ(typed(App::iterm).program(), "codex");
    EXPECT_FALSE(ssh.tool());
    EXPECT_EQ(ssh.program(), "ssh");
    EXPECT_EQ(OpenRequest::ofAttach(App::iterm, {"/t"}, "/v", false).program(), "/v");
    EXPECT_EQ(bundleIdentifier(App::ghostty), "com.mitchellh.ghostty");
}

TEST(DevTerminal, ParsesWhatMayBeOpened) {
    const OpenRequest tool{.cwd = "/Users/me/dev/app", .command = Tool{"agy"}};
    EXPECT_EQ(parse("--app Terminal --cwd /Users/me/dev/app --tool agy"), tool);
    OpenRequest full = executed(App::iterm);
    full.cwd = "/Users/me/d/";
    full.fullscreen = true;
    EXPECT_EQ(parse("--tool-path /opt/bin/claude --exec 1 --fullscreen 1 --tool claude"
                    " --cwd /Users/me/d/ --app iTerm2"),
              full);
    EXPECT_EQ(parse("--app Ghostty --ssh-target me@h --ssh-port 65535 --fullscreen 1"),
              OpenRequest::ofSsh(App::ghostty, {"me@h", 65535}, true));
    EXPECT_EQ(
        parse("--app Terminal --attach-file /T/velmo-term/x"),
        OpenRequest::ofAttach(App::terminal, {"/T/velmo-term/x"}, "/Applications/Velmo", false));
}

TEST(DevTerminal, OpensNothingElse) {
    const std::string attach = "--app Terminal --attach-file /T/velmo-term/x";
    expectRefused(
        parse, {"", "--app", "--app Terminal", "--ssh-target h", "--app terminal --ssh-target h"});
    expectRefused(parse, "--app Terminal #",
                  {"--cwd /Users/me/dev --tool zsh", "--cwd /Users/me/dev", "--tool codex",
                   "--cwd /Users/me --tool codex", "--cwd dev --tool codex",
                   "--cwd /Users/me/dev/../x --tool codex", "--cwd /Users/me/dev/out --tool codex",
                   "--ssh-target h@", "--ssh-target -- --tool", "--attach-file /T/velmo-term/a/x",
                   "--attach-file /T/velmo-term"});
    expectRefused(
        parse, each("--app Terminal --cwd /Users/me/dev --tool codex #",
                    {"--app Terminal", "--verbose 1", "--exec", "--exec 0", "--fullscreen true",
                     "--ssh-port 22", "--tool-path /opt/bin/claude", "--tool-path /opt/bin/codex/",
                     "--tool-path bin/codex", "--tool-path /opt/../codex"}));
    expectRefused(parse, "--app Terminal --ssh-target h #",
                  {"--cwd /Users/me/dev", "--tool codex", "--tool-path /opt/codex", "--exec 1",
                   "--ssh-port 0", "--ssh-port 65536"});
    expectRefused(parse, attach + " #", {"--cwd /Users/me/dev", "--exec 1", "--ssh-target h"});
    expectRefused(
        [&](const std::string& executable) {
            return parseOpen(words(attach), "/Users/me", "/T/velmo-term", executable, resolve);
        },
        {"", "Velmo", "/A/Velmo/", "/A/./V"});
    EXPECT_FALSE(parseOpen(words(attach), "/Users/me", "/T/velmo-term", std::nullopt, resolve));
    EXPECT_FALSE(parseOpen(words(attach), "/Users/me", std::nullopt, "/V", resolve));
}

TEST(DevTerminal, ParsesWhatToFocus) {
    EXPECT_EQ(parseFocus(words("--pid 1")), FocusRequest{.pid = 1});
    EXPECT_EQ(parseFocus(words("--tty /dev/ttys001 --pid 2147483647")),
              (FocusRequest{.pid = 2147483647, .tty = "/dev/ttys001"}));
    expectRefused(
        [](const std::string& line) { return parseFocus(words(line)); },
        joined(each("--pid #", words("2147483648 99999999999999999999 0 01 -1 +1")),
               {"", "--pid", "--pid 1 --pid 1", "--pid 1 --tty ttys001", "--tty /dev/ttys001"}));
}

TEST(DevTerminal, AllowsFoldersStrictlyInsideHome) {
    const auto inside = [](const char* home) {
        return [home](const std::string& path) { return isAllowedFolder(path, home, resolve); };
    };
    const Strings allowed =
        words("/Users/me/dev /Users/me/dev/app/ /users/ME/dev/app /Users/me/dev/library "
              "/Users/me/library2 /Users/me/.github /Users/me/.npm-global/x /Users/me/dev/.config");
    expectVerdicts(inside("/home/me"), allowed, {});
    // Out of the home folder or not strictly inside; by way of a link; denied in any letter case,
    // also by what a disk without letter case takes for the same name (ſ, the Kelvin sign).
    expectVerdicts(inside("/Users/me"), allowed, joined({"", "/Users/me/\xFF"}, words(R"(
        /Users/me /Users/me/ /Users/meagain/dev /Users / Users/me/dev /Users/me/dev/..
        /Users/me/./dev /Users/me/dev/out /Users/me/dev/keys /Users/me/dev/loop /Users/me/LIBRARY/x
        /Users/me/Library /Users/me/.Claude/x /Users/me/appdata /Users/me/dev/app/.git
        /Users/me/dev/.GIT/hooks /Users/me/dev/Keychains /Users/me/.ſsh /Users/me/.docKer)")));

    // Lower case of another length; bytes that would be repaired alike; homes that are none.
    EXPECT_TRUE(isAllowedResolvedFolder("/Users/\u0130/ı/app", "/Users/i\u0307/ı"));
    EXPECT_TRUE(isAllowedResolvedFolder("/a/b", "/a/"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/\xFE/dev", "/Users/\xFF"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/me/dev/../../x", "/Users/me"));
    for (const char* home : {"/", "", "dev"})
        EXPECT_FALSE(isAllowedResolvedFolder("/dev/app", home)) << home;
}

TEST(DevTerminal, TargetsPortsAndAttachFiles) {
    expectVerdicts(isSshTarget, {"h", "me@h", "-x", "a_b.c-d@e.f"},
                   {"", "@h", "me@", "a@b@c", "[::1]", "h:22", "h\n", "é", "a b"});
    EXPECT_EQ(sshPort("1"), 1);
    EXPECT_EQ(sshPort("65535"), 65535);
    expectRefused(sshPort, {"", "0", "022", "65536", "99999", "100000", "+22", "22 "});

    EXPECT_TRUE(isAttachFile("/T/f", "/T/"));
    expectVerdicts([](const std::string& file) { return isAttachFile(file, "/T"); }, {"/T/f"},
                   {"/T/f/", "/T/s/f", "/t/f", "/T", "/Tf", "/T/../T/f", "/T//f", "T/f"});
    EXPECT_FALSE(isAttachFile("/f", ""));
    EXPECT_FALSE(isAttachFile("/f", "/"));
    EXPECT_FALSE(isAttachFile("/T/f", std::nullopt));
}

} // namespace
} // namespace velmo
