#include "core/terminal/DevTerminal.h"

#include "tests/Texts.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace velmo {
namespace {

using namespace DevTerminal;

std::optional<std::string> resolve(std::string_view path) {
    return std::string(path);
}

std::optional<OpenRequest> parse(const std::string& line) {
    return parseOpen(words(line), "/Users/me", "/T/velmo-term", "/A/Velmo", resolve);
}

TEST(DevTerminal, ParsesWhatMayBeOpened) {
    OpenRequest tool{.cwd = "/Users/me/d/", .command = Tool{"agy"}};
    EXPECT_EQ(parse("--app Terminal --cwd /Users/me/d/ --tool agy"), tool);
    tool.app = App::iterm;
    tool.fullscreen = true;
    tool.exec = true;
    tool.toolPath = "/opt/bin/agy";
    EXPECT_EQ(parse("--tool-path /opt/bin/agy --fullscreen 1 --tool agy --cwd /Users/me/d/"
                    " --exec 1 --app iTerm2"),
              tool);
    const auto ssh = OpenRequest::ofSsh(App::ghostty, {.target = "me@h", .port = 65535}, true);
    EXPECT_EQ(parse("--app Ghostty --ssh-target me@h --ssh-port 65535 --fullscreen 1"), ssh);
    EXPECT_TRUE(ssh.exec && ssh.fullscreen && !ssh.tool() && ssh.program() == "ssh");
    const auto attach =
        OpenRequest::ofAttach(App::terminal, {"/T/velmo-term/x"}, "/A/Velmo", false);
    EXPECT_EQ(parse("--app Terminal --attach-file /T/velmo-term/x"), attach);
    EXPECT_TRUE(attach.exec && !attach.fullscreen && attach.program() == "/A/Velmo");
}

TEST(DevTerminal, EachCommandHasItsOwnOptions) {
    const struct {
        std::string line;
        Strings others; ///< options that may be added
    } commands[] = {
        {.line = "--app Terminal --cwd /Users/me/dev --tool codex",
         .others = {"--tool-path /opt/codex", "--fullscreen 1", "--exec 1"}},
        {.line = "--app Terminal --ssh-target h", .others = {"--ssh-port 22", "--fullscreen 1"}},
        {.line = "--app Terminal --attach-file /T/velmo-term/x", .others = {"--fullscreen 1"}},
    };

    for (const auto& [line, others] : commands) {
        EXPECT_TRUE(parse(line)) << line;
        for (const char* other :
             {"--app Terminal", "--cwd /Users/me/dev", "--tool codex", "--tool-path /opt/codex",
              "--ssh-target h", "--ssh-port 22", "--fullscreen 1", "--exec 1", "--verbose 1",
              "--attach-file /T/velmo-term/x", "--fullscreen 0", "--exec true", "--exec"})
            EXPECT_EQ(parse(line + " " + other).has_value(),
                      std::ranges::find(others, other) != others.end())
                << line << " " << other;
    }
}

TEST(DevTerminal, OpensNothingElse) {
    expectRefused(
        parse, {"", "--app", "--app Terminal", "--ssh-target h", "--app terminal --ssh-target h"});
    expectRefused(parse, "--app Terminal #",
                  {"--cwd /Users/me/dev --tool zsh", "--cwd /Users/me/dev", "--tool codex",
                   "--cwd /Users/me --tool codex", "--cwd dev --tool codex",
                   "--cwd /Users/me//dev --tool codex", "--ssh-target h@",
                   "--ssh-target h --ssh-port 0", "--attach-file /T/velmo-term/a/x"});
    expectRefused(parse, "--app Terminal --cwd /Users/me/dev --tool codex --tool-path #",
                  words("/opt/bin/claude /opt/bin/codex/ bin/codex /opt/../codex"));
    const Strings attach = words("--app Terminal --attach-file /T/x");
    EXPECT_TRUE(parseOpen(attach, "/Users/me", "/T", "/A/V", resolve));
    EXPECT_FALSE(parseOpen(attach, "/Users/me", std::nullopt, "/A/V", resolve));
    EXPECT_FALSE(parseOpen(attach, "/Users/me", "/T", std::nullopt, resolve));
    for (const char* executable : {"", "V", "/A/V/", "/A/./V"})
        EXPECT_FALSE(parseOpen(attach, "/Users/me", "/T", executable, resolve)) << executable;
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

TEST(DevTerminal, RecognisesTtysAndAttachFiles) {
    expectVerdicts(isTty, {"/dev/ttys0", "/dev/ttys9999"},
                   {"", "/dev/ttys", "/dev/ttys12345", "/dev/tty1", "/dev/ttys1\n", "/dev/ttysa",
                    "x/dev/ttys1", "/dev/ttys1\""});

    EXPECT_TRUE(isAttachFile("/T/f", "/T/"));
    expectVerdicts([](const std::string& file) { return isAttachFile(file, "/T"); }, {"/T/f"},
                   {"/T/f/", "/T/s/f", "/t/f", "/T", "/Tf", "/T/../T/f", "/T//f", "T/f"});
    EXPECT_FALSE(isAttachFile("/f", "") || isAttachFile("/f", "/") || isAttachFile("/f", {}));
}

const OpenRequest typed{
    .cwd = "/it's \"x\"", .command = Tool{"codex"}, .toolPath = "/opt/bin/codex"};

/// Returns the text that a launcher must write, from a file.
std::string expected(const std::string& file) {
    std::ifstream stream(VELMO_SCRIPTS "/" + file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(DevTerminalScripts, EveryCommandHasALineForEachApplication) {
    const OpenRequest requests[] = {
        typed, // the shell finds a typed tool by its name
        {.cwd = "/a", .command = Tool{"agy"}, .exec = true, .toolPath = "/b/agy"},
        {.command = Tool{"claude"}, .fullscreen = true, .exec = true},
        OpenRequest::ofSsh(App::terminal, {.target = "me@host", .port = {}}, true),
        OpenRequest::ofSsh(App::terminal, {.target = "host", .port = 2222}, false),
        OpenRequest::ofAttach(App::terminal, {"/T/a b.json"}, "/A/Velmo", false),
    };
    std::string lines;
    for (const OpenRequest& request : requests) {
        lines += "Terminal: " + shellCommand(request) + "\niTerm2: " + itermCommand(request);
        lines += "\nGhostty:";
        for (const std::string& argument : ghosttyArguments(request))
            lines += " [" + argument + "]";
        lines += '\n';
    }
    EXPECT_EQ(lines, expected("command-lines.txt"));
}

TEST(DevTerminalScripts, AreWhatTheFilesSayByteForByte) {
    OpenRequest request = typed;
    EXPECT_EQ(openScript(request).value() + '\n', expected("terminal-open.applescript"));
    request.app = App::iterm;
    EXPECT_EQ(openScript(request).value() + '\n', expected("iterm-type.applescript"));
    request = OpenRequest::ofSsh(App::iterm, {.target = "h", .port = 22}, true);
    EXPECT_EQ(openScript(request).value() + '\n', expected("iterm-execute.applescript"));
    EXPECT_EQ(terminalFocusScript("/dev/ttys003").value() + '\n',
              expected("terminal-focus.applescript"));
    EXPECT_EQ(itermFocusScript("/dev/ttys1234").value() + '\n',
              expected("iterm-focus.applescript"));
    expectRefused(terminalFocusScript, {"", "/dev/tty1"});
    expectRefused(itermFocusScript, {"", "/dev/tty1"});
    EXPECT_FALSE(openScript({.app = App::ghostty, .command = Tool{"codex"}}));
    // A placeholder of ours in a folder's name is only text.
    request = {.cwd = "{command}", .command = Tool{"codex"}};
    EXPECT_TRUE(openScript(request)->contains("do script \"cd '{command}' && codex\"\n"));
}

bool isAllowed(const std::string& path) {
    return isAllowedResolvedFolder(path, "/Users/me");
}

TEST(AllowedFolder, LiesStrictlyInsideHome) {
    // Names that a disk without letter case takes for a denied one are denied too: ſ, Kelvin sign.
    expectVerdicts(isAllowed, words(R"(/Users/me/dev /Users/me/dev/app/ /users/ME/dev/app
                       /Users/me/dev/library /Users/me/.github /Users/me/.npm-global/x)"),
                   joined({"", "/Users/me/\xFF"}, words(R"(
                       /Users/me /Users/me/ /Users/meagain/dev /Users / Users/me/dev /Users/me/dev/..
                       /Users/me/./dev /Users/me/dev/../../x /Users/me/.ſsh /Users/me/.docKer)")));
    // Lower case of another length; bytes that would be repaired alike; invalid homes.
    EXPECT_TRUE(isAllowedResolvedFolder("/Users/\u0130/ı/app", "/Users/i\u0307/ı"));
    EXPECT_TRUE(isAllowedResolvedFolder("/a/b", "/a/"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/\xFE/dev", "/Users/\xFF"));
    for (const char* home : {"/", "", "dev"})
        EXPECT_FALSE(isAllowedResolvedFolder("/dev/app", home)) << home;
}

TEST(AllowedFolder, IsNeitherADeniedOneNorInsideOne) {
    const std::string home = "/Users/me/";
    for (const std::string_view denied : deniedTop) {
        const std::string name(denied);
        EXPECT_FALSE(isAllowed(home + name) || isAllowed(home + name + "/x")) << name;
        EXPECT_EQ(isAllowed(home + "dev/" + name), !Text::isOneOf(name, deniedAnywhere)) << name;
        EXPECT_TRUE(isAllowed(home + name + "x")) << name;
    }
    for (const std::string_view name : deniedAnywhere)
        EXPECT_FALSE(isAllowed(home + "dev/" + std::string(name) + "/x")) << name;
    EXPECT_FALSE(isAllowed("/Users/me/LIBRARY") || isAllowed("/Users/me/dev/.Git"));
}

TEST(AllowedFolder, IsResolvedUnlessItHasDots) {
    const auto resolve = [](std::string_view path) {
        return std::optional<std::string>(path == "/home" ? "/Users" : "/Users/dev");
    };
    EXPECT_TRUE(isAllowedFolder("/home/x", "/home", resolve));
    EXPECT_FALSE(isAllowedFolder("/home/./x", "/home", resolve));
    EXPECT_FALSE(isAllowedFolder("/home/x/../y", "/home", resolve));
}

} // namespace
} // namespace velmo
