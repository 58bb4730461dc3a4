#include "core/terminal/SshTarget.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

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

} // namespace
} // namespace velmo
