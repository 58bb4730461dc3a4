#include "core/terminal/PtyWords.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace std::string_literals;

TEST(PtyWords, PathsAndDimensions) {
    expectVerdicts(Pty::isCleanAbsolutePath, {"/a", "/a/"}, {"/", "a", "/a/..", "/a//b", "/a\n"});
    for (int number = 0; number <= 10000; ++number)
        EXPECT_EQ(Pty::dimension(std::to_string(number)).value_or(0), number % 10000);
    expectRefused(Pty::dimension, {"", "080", "+80", "-1", " 80", "80 ", "8O", "٨"});
    EXPECT_FALSE(Pty::dimension(std::nullopt));
}

TEST(PtyWords, Identifiers) {
    expectVerdicts(Pty::isUuid, {"01234567-89ab-CDEF-0123-456789abcdef"},
                   {"01234567-89ab-CDEF-0123-456789abcde", "01234567-89ab-CDEF-0123-456789abcdef0",
                    "0123456789ab--CDEF-0123-456789abcdef", "01234567-89ab-CDEG-0123-456789abcdef",
                    "01234567-89ab-CDEF-0123_456789abcdef"});
    expectVerdicts(Pty::isOpencodeSessionId, {"ses_12345678", "ses_" + std::string(64, 'Z')},
                   {"ses_1234567", "ses_" + std::string(65, 'Z'), "Ses_12345678", "ses_1234567-",
                    "ses-12345678"});
    expectVerdicts(Pty::isModelId, {"a", "7b/x._:@[1m]-y", std::string(100, 'm')},
                   {std::string(101, 'm'), "", "-a", ".a", "a b", "a;b", "é", "a\0"s});
}

TEST(SshTarget, HasARuleForTheLauncherAndOneForSessions) {
    const Strings both{"h", "me@example.org", "a-b_c.d@e", "user@-x"};
    const Strings launcher{"-x", "-oProxyCommand", "m@" + std::string(252, 'h')};
    const Strings sessions{"[fe80::1]", "me@[::ffff:1.2.3.4]", "[.]", "[A]"};
    const Strings neither{"",     "@h",    "me@",           "a@b@c", "[]",  "[",   "[::1", "[::1]x",
                          "h:22", "m:p@h", "[fe80::1%en0]", "[::g]", "h h", "h\n", "hé"};
    expectVerdicts(DevTerminal::isSshTarget, joined(both, launcher), joined(sessions, neither));
    expectVerdicts(Pty::isSshTarget, joined(both, sessions), joined(launcher, neither));
    EXPECT_TRUE(Pty::isSshTarget("m@" + std::string(251, 'h')));
}

TEST(SshTarget, PortsHaveOneSpelling) {
    for (int port = 1; port <= 65535; ++port)
        EXPECT_EQ(DevTerminal::sshPort(std::to_string(port)), port);
    expectRefused(DevTerminal::sshPort, {"", "0", "022", "65536", "100000", "+22", "-1", "22 "});
}

TEST(PtyWords, SshArguments) {
    expectVerdicts([](const std::string& line) { return Pty::isSshArguments(words(line)); },
                   {"-- me@host", "-p 2222 -- host", "-p 65535 -- [fe80::1]"},
                   {"-p 0 -- host", "-p 65536 -- host", "-p 022 -- host", "-P 22 -- host",
                    "-p 22 host", "-p 22 -p 22 -- host", "host", "-- -x", "-- host ls",
                    "-v -- host", "--", ""});
}

/// Turns a rule about a tool and its arguments into a rule about a command line.
auto onLines(bool (*rule)(std::string_view tool, Pty::Words arguments)) {
    return [rule](const std::string& line) {
        const Strings all = words(line);
        return rule(all[0], Pty::Words(all).subspan(1));
    };
}

TEST(PtyWords, AgentFlags) {
    const std::string bypass = "codex --dangerously-bypass-approvals-and-sandbox";
    const std::string skip = "claude --dangerously-skip-permissions";
    expectVerdicts(onLines(Pty::isAgentFlags),
                   {"agy", "claude", "claude --model m --permission-mode acceptEdits --continue",
                    skip + " --continue",
                    "codex --sandbox workspace-write --ask-for-approval never",
                    bypass + " --model m", "opencode --model a/b"},
                   {"agy --model m", skip + " --permission-mode plan",
                    "claude --permission-mode plan --dangerously-skip-permissions",
                    "claude --permission-mode bypassPermissions", "claude --permission-mode",
                    "claude --model m --model m", "claude --continue --continue", "claude --model",
                    "claude --model --continue", "claude --sandbox read-only", "claude x",
                    bypass + " --sandbox read-only", bypass + " --ask-for-approval untrusted",
                    "codex --sandbox danger", "opencode --continue", "ssh", "zsh", "Claude"});
    // The "" that pads a list of values does not count as a value.
    EXPECT_FALSE(Pty::isAgentFlags("claude", Strings{"--permission-mode", ""}));
    EXPECT_FALSE(Pty::isAgentFlags("", Strings{}));
}

TEST(PtyWords, EachAgentResumesInItsOwnWay) {
    const std::string uuid = " 01234567-89ab-cdef-0123-456789abcdef";
    const std::string session = " ses_0123456789";
    expectVerdicts(onLines(Pty::isAgentArguments),
                   {"claude --resume" + uuid, "codex resume" + uuid, "opencode -s" + session, "agy",
                    "claude --continue"},
                   {"claude --resume", "claude --resume" + session, "claude resume" + uuid,
                    "claude --resume" + uuid + " --continue", "codex --resume" + uuid,
                    "opencode -s" + uuid, "agy --resume" + uuid, "ssh"});
}

TEST(PtyWords, ShellArguments) {
    for (const std::string_view shell : Pty::shells) {
        const auto fits = [=](const std::string& line) {
            return Pty::isShellArguments(shell, words(line));
        };
        const Strings login{"-l"}, multiplexer{"attach-session", "new-session"};
        expectVerdicts(fits, shell == "tmux" ? multiplexer : login,
                       joined(shell == "tmux" ? login : multiplexer, {"", "-i", "-l -l", "-c x"}));
    }
}

TEST(PtyWords, Interpreters) {
    // Full-width digits, Roman numerals and superscripts are numbers; the Kelvin sign is a k.
    expectVerdicts(Pty::isInterpreter,
                   {"bash", "NODE", "python3", "python3.12", "python-3.12", "node-18", "node.18-1",
                    "zsh-5.9", "osascript", "cmd.exe", "Python3.EXE", "python\uFF13",
                    "python\u2162", "bun\u00B2", "\u212Ash"},
                   {"pythonista", "python3a", "python3.12a", "node-", "node.", "claude", "1.0.42",
                    "18", "", ".exe", "bash.exe.exe", "sh\xFF", "pe\u0280l"});
}

} // namespace
} // namespace velmo
