#include "core/terminal/DevTerminal.h"

#include "tests/Texts.h"

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

TEST(DevTerminal, TellsTtysAndTheFilesOfAttachClients) {
    expectVerdicts(isTty, {"/dev/ttys0", "/dev/ttys9999"},
                   {"", "/dev/ttys", "/dev/ttys12345", "/dev/tty1", "/dev/ttys1\n", "/dev/ttysa",
                    "x/dev/ttys1", "/dev/ttys1\""});

    EXPECT_TRUE(isAttachFile("/T/f", "/T/"));
    expectVerdicts([](const std::string& file) { return isAttachFile(file, "/T"); }, {"/T/f"},
                   {"/T/f/", "/T/s/f", "/t/f", "/T", "/Tf", "/T/../T/f", "/T//f", "T/f"});
    EXPECT_FALSE(isAttachFile("/f", "") || isAttachFile("/f", "/"));
    EXPECT_FALSE(isAttachFile("/T/f", std::nullopt));
}

} // namespace
} // namespace velmo
