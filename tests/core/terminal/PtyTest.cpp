#include "core/terminal/Pty.h"

#include "tests/core/terminal/FakeDisk.h"
#include "tests/core/terminal/Lines.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace velmo {
namespace {

using namespace std::string_literals;
using Pty::Environment;
using Strings = std::vector<std::string>;

class PtyTest : public testing::Test {
protected:
    PtyTest() {
        for (const char* folder : {"/Users/me/dev/app", "/Users/me/.ssh", "/Users/me/Library/x",
                                   "/Users/platform/dev", "/tmp", "/var/tmp", "/elsewhere"})
            disk.addFolder(folder);
        for (const char* program :
             {"/bin/zsh", "/bin/bash", "/usr/bin/ssh", "/usr/local/bin/fish", "/bin/rm",
              "/opt/homebrew/Cellar/tmux/3.4/bin/tmux", "/opt/homebrew/Cellar/node/18/bin/node",
              "/opt/homebrew/Cellar/openssh/9/bin/ssh", "/opt/tools/claude", "/opt/tools/codex",
              "/opt/tools/opencode", "/opt/tools/agy", "/opt/tools/velmo-pty-fixture",
              "/opt/agents/versions/1.0.42"})
            disk.addProgram(program);
        disk.link("/opt/homebrew/bin/tmux", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux");
        disk.link("/opt/homebrew/bin/ssh", "/opt/homebrew/Cellar/openssh/9/bin/ssh");
        disk.link("/opt/linked/claude", "/opt/agents/versions/1.0.42");
        disk.link("/opt/scripts/claude", "/opt/homebrew/Cellar/node/18/bin/node");
        disk.link("/home/me", "/Users/me");
        disk.link("/Users/me/dev/secrets", "/Users/me/.ssh");
    }

    std::optional<SpawnRequest> spawn(const Strings& words) const {
        return Pty::parseSpawn(words, environment, disk);
    }

    std::optional<SpawnRequest> run(const Strings& command,
                                    const std::string& cwd = "/Users/me/dev/app") const {
        Strings words{"--cwd", cwd, "--cols", "80", "--rows", "24", "--"};
        words.insert(words.end(), command.begin(), command.end());
        return spawn(words);
    }

    FakeDisk disk;
    Environment environment{{"HOME", "/Users/me"}};
};

TEST_F(PtyTest, AShellMayStartInTheHomeFolder) {
    disk.link("/bin/zsh", "/usr/bin/zsh");
    disk.addProgram("/usr/bin/zsh");
    environment["HOME"] = "/home/me";
    EXPECT_EQ(run({"/bin/zsh", "-l"}, "/home/me"), (SpawnRequest{.cwd = "/Users/me",
                                                                 .cols = 80,
                                                                 .rows = 24,
                                                                 .program = "/usr/bin/zsh",
                                                                 .argv = {"/bin/zsh", "-l"}}));
}

TEST_F(PtyTest, OptionsArePairsInAnyOrder) {
    EXPECT_TRUE(spawn(words("--rows 500 --cols 1000 --cwd /Users/me -- /bin/zsh -l")));
    for (const std::string refused :
         {"", "--cwd /Users/me", "--cwd /Users/me --cols 80 --rows",
          "--cwd /Users/me --cols 80 --rows 24 x", "--cwd /Users/me --cols 80 --cols 80",
          "--cwd /Users/me --cols 80 --rows 24 --rows 24", "--cwd /Users/me --cols 80 --row 24",
          "--cwd /Users/me --cols 80 --origin cli",
          "--cwd /Users/me --cols 80 --rows 24 --origin cli", // no claude
          "--cwd /Users/me --cols 0 --rows 24", "--cwd /Users/me --cols 1001 --rows 24",
          "--cwd /Users/me --cols 080 --rows 24", "--cwd /Users/me --cols 80 --rows 501",
          "--cwd /Users/me --cols 80 --rows --", "--cwd /Users/me/../me --cols 80 --rows 24",
          "--cwd --cols --cols 80 --rows 24"})
        EXPECT_FALSE(spawn(words(refused + " -- /bin/zsh -l"))) << refused;
    EXPECT_FALSE(spawn(words("--cwd /Users/me --cols 80 --rows 24 /bin/zsh -l")));
    EXPECT_FALSE(spawn(words("--cwd /Users/me --cols 80 --rows 24 --")));
}

TEST_F(PtyTest, AdmitsAClosedSetOfPrograms) {
    for (const char* command :
         {"/bin/zsh -l", "/usr/local/bin/fish -l", "/opt/homebrew/bin/tmux new-session",
          "/opt/homebrew/bin/tmux attach-session", "/usr/bin/ssh -- me@host",
          "/opt/homebrew/bin/ssh -p 22 -- host", "/opt/tools/claude",
          "/opt/tools/claude --continue", "/opt/linked/claude", "/opt/tools/codex",
          "/opt/tools/opencode", "/opt/tools/agy"})
        EXPECT_TRUE(run(words(command))) << command;
    for (const char* command :
         {"/bin/zsh", "/bin/zsh -i", "/bin/zsh/ -l", "zsh -l", "/opt/tools/../../bin/zsh -l",
          "/opt/homebrew/bin/tmux -l", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux new-session",
          "/bin/missing -l", "/bin/rm -l", "/usr/bin/ssh host",
          "/opt/homebrew/Cellar/openssh/9/bin/ssh -- host", "/opt/tools/claude --print",
          "/opt/scripts/claude", "/opt/tools/agy x", "/opt/tools/velmo-pty-fixture"})
        EXPECT_FALSE(run(words(command))) << command;
    disk.link("/opt/tools/agy", "/Users/me/dev/app"); // a folder can't be run
    EXPECT_FALSE(run({"/opt/tools/agy"}));
}

TEST_F(PtyTest, TheFileBehindAShellMustBeOneToo) {
    const std::pair<std::string, std::string> refused[] = {
        {"/bin/zsh", "/bin/rm"},
        {"/bin/zsh", "/usr/local/Cellar/zsh/zsh-5.9"},
        {"/bin/zsh", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux"},
        {"/bin/zsh", "/opt/elsewhere/zsh"},
        {"/opt/homebrew/bin/tmux", "/bin/bash"},
        {"/usr/bin/ssh", "/opt/elsewhere/bin/ssh"},
        {"/usr/bin/ssh", "/opt/homebrew/Cellar/openssh/9/bin/sshx"},
    };
    for (const auto& [given, target] : refused) {
        disk.addProgram(target);
        disk.link(given, target);
        const Strings arguments[] = {{given, "-l"}, {given, "new-session"}, {given, "--", "host"}};
        for (const Strings& command : arguments)
            EXPECT_FALSE(run(command)) << given << " -> " << target;
    }
    disk.addProgram("/usr/local/Cellar/bash/5/bin/bash");
    disk.link("/bin/zsh", "/usr/local/Cellar/bash/5/bin/bash");
    EXPECT_TRUE(run({"/bin/zsh", "-l"}));
}

TEST_F(PtyTest, TheCommandLineOriginLiftsClaudesGrammarOnly) {
    const auto fromCommandLine = [&](const Strings& command, const std::string& origin = "cli") {
        Strings words{"--cwd", "/Users/me/dev/app", "--cols", "80", "--rows",
                      "24",    "--origin",          origin,   "--"};
        words.insert(words.end(), command.begin(), command.end());
        return spawn(words).has_value();
    };
    const auto claudeWith = [](std::size_t count, const std::string& argument) {
        Strings command{"/opt/tools/claude"};
        command.insert(command.end(), count, argument);
        return command;
    };
    EXPECT_TRUE(fromCommandLine({"/opt/tools/claude", "--print", "any thing\n", ""}));
    EXPECT_TRUE(fromCommandLine(claudeWith(64, std::string(4096, 'a'))));
    EXPECT_FALSE(fromCommandLine(claudeWith(65, "")));
    EXPECT_FALSE(fromCommandLine(claudeWith(1, std::string(4097, 'a'))));
    EXPECT_FALSE(fromCommandLine(claudeWith(1, "a\0b"s)));
    EXPECT_FALSE(fromCommandLine(claudeWith(1, "\xFF")));
    EXPECT_FALSE(fromCommandLine({"/opt/scripts/claude", "x"})); // an interpreter stays one
    EXPECT_FALSE(fromCommandLine({"/opt/tools/codex"}));
    EXPECT_FALSE(fromCommandLine({"/bin/zsh", "-l"}));
    EXPECT_FALSE(fromCommandLine({"/opt/tools/claude"}, "CLI"));
    EXPECT_FALSE(fromCommandLine({"/opt/tools/claude"}, ""));
}

TEST_F(PtyTest, WorkingFolders) {
    const Strings shell{"/bin/zsh", "-l"};
    const Strings ssh{"/usr/bin/ssh", "--", "h"};
    const Strings agent{"/opt/tools/codex"};

    struct Case {
        std::string cwd;
        bool forShell, forAgent;
    };

    const Case cases[] = {
        {"/Users/me/dev/app", true, true},
        {"/Users/me/dev/app/", true, true},
        {"/home/me", true, false}, // the home folder itself, by way of a link
        {"/Users/me", true, false},
        {"/Users/me/.ssh", false, false},
        {"/Users/me/dev/secrets", false, false},
        {"/Users/me/Library/x", false, false},
        {"/Users/platform/dev", false, false},
        {"/Users", false, false},
        {"/elsewhere", false, false},
        {"/Users/me/missing", false, false},
        {"/bin/zsh", false, false},
    };
    for (const auto& [cwd, forShell, forAgent] : cases) {
        EXPECT_EQ(run(shell, cwd).has_value(), forShell) << cwd;
        EXPECT_EQ(run(ssh, cwd).has_value(), forShell) << cwd;
        EXPECT_EQ(run(agent, cwd).has_value(), forAgent) << cwd;
    }
    environment = {};
    EXPECT_TRUE(run(agent, "/Users/platform/dev"));
    environment["HOME"] = ""; // present, and leads nowhere
    EXPECT_FALSE(run(shell, "/Users/platform/dev"));
    environment["HOME"] = "/missing";
    EXPECT_FALSE(run(shell, "/Users/platform/dev"));
}

TEST_F(PtyTest, TheFixtureNeedsItsEnvironment) {
    const Strings command{"/opt/tools/velmo-pty-fixture", "any", "--thing"};
    for (const char* value : {"", "0", "11", "true"}) {
        environment["VELMO_PTY_TEST"] = value;
        EXPECT_FALSE(run(command)) << value;
    }
    environment["VELMO_PTY_TEST"] = "1";
    EXPECT_TRUE(run(command));
    EXPECT_FALSE(run(command, "/Users/me"));
    EXPECT_FALSE(run({"/bin/rm", "any"}));
}

TEST_F(PtyTest, RunsNothingThatOthersCouldHavePutThere) {
    for (const std::string root : {"/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp",
                                   "/var/folders", "/private/var/folders"}) {
        for (const std::string& folder : {root, root + "/ab/T"}) {
            disk.addProgram(folder + "/claude");
            EXPECT_FALSE(run({folder + "/claude"})) << folder;
        }
        disk.addProgram(root + "x/claude");
        EXPECT_TRUE(run({root + "x/claude"})) << root;
    }
    // A good path to a bad file, and a bad path to a good one.
    disk.link("/opt/tools/codex", "/tmp/claude");
    EXPECT_FALSE(run({"/opt/tools/codex"}));
    disk.link("/tmp/opencode", "/opt/tools/opencode");
    EXPECT_FALSE(run({"/tmp/opencode"}));

    for (const char* folder : {"/opt/tools", "/opt", "/"}) {
        disk.writable = {folder};
        EXPECT_FALSE(run({"/opt/tools/claude"})) << folder;
    }
    disk.writable = {"/opt/agents"};
    EXPECT_FALSE(run({"/opt/linked/claude"}));
    EXPECT_TRUE(run({"/opt/tools/claude"}));
    disk.folders.erase("/opt"); // no telling
    EXPECT_FALSE(run({"/opt/tools/claude"}));
}

TEST_F(PtyTest, TheUsersOwnTemporaryFolderIsUnsafe) {
    disk.addProgram("/data/T/bin/claude");
    disk.link("/short", "/data/T");
    const std::pair<std::string, bool> cases[] = {
        {"/short", false},    {"/data/T/", false}, {"/data", false}, {"/", false},
        {"/data/T/bi", true}, {"/missing", true},  {"", true}};
    disk.addFolder("/data/T/bi");
    for (const auto& [folder, trusted] : cases) {
        environment["TMPDIR"] = folder;
        EXPECT_EQ(
            Pty::isTrustedProgram("/data/T/bin/claude", "/data/T/bin/claude", environment, disk),
            trusted)
            << folder;
    }
}

TEST_F(PtyTest, TheDiskIsAskedOnlyAfterTheWordsHavePassed) {
    for (const char* command :
         {"/bin/zsh -i", "/opt/zsh -l", "/opt/tools/claude --print", "/opt/tools/rm",
          "/usr/bin/ssh host", "/opt/bin/ssh -- host", "bin/zsh -l", "/opt/tools/agy x"})
        EXPECT_FALSE(run(words(command))) << command;
    EXPECT_FALSE(run({"/bin/zsh", "-l"}, "Users/me"));
    EXPECT_FALSE(spawn(words("--cwd /Users/me --cols 0 --rows 24 -- /bin/zsh -l")));
    EXPECT_EQ(disk.questions, 0);
}

TEST(PtyChildEnvironment, PassesNothingElse) {
    const Environment always{{"TERM", "xterm-256color"}, {"COLORTERM", "truecolor"}};
    const std::pair<std::string, std::string> path{"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"};
    const std::pair<std::string, std::string> language{"LANG", "en_US.UTF-8"};
    const Environment wanted{{"PATH", "/p"},       {"HOME", "/h"},  {"SSH_AUTH_SOCK", "/s"},
                             {"TMPDIR", "/t"},     {"USER", "me"},  {"LOGNAME", "me"},
                             {"SHELL", "/bin/sh"}, {"LC_ALL", "C"}, {"LC_", "x"}};
    const Environment unwanted{{"TERM", "dumb"}, {"COLORTERM", ""}, {"LC_X=Y", "x"},
                               {"LC_Z\0"s, "x"}, {"lc_ctype", "x"}, {"LANG", "a\0b"s},
                               {"home", "x"},    {"EDITOR", "x"},   {"VELMO_PTY_TEST", "1"}};

    struct Case {
        Environment given, added, child;
    };

    const Case cases[] = {
        {{}, {}, {path, language}},
        {wanted, unwanted, wanted},
        {{{"PATH", ""}, {"LC_ALL", ""}}, {{"LC_TIME", "C"}}, {path, language, {"LC_TIME", "C"}}},
        {{{"PATH", "/p"}}, {{"LC_CTYPE", "C"}}, {{"PATH", "/p"}, {"LC_CTYPE", "C"}}},
    };
    for (auto [given, added, child] : cases) {
        given.merge(added);
        child.insert(always.begin(), always.end());
        EXPECT_EQ(Pty::childEnvironment(given), child);
        EXPECT_EQ(Pty::childEnvironment(child), child);
    }
}

TEST(PtyExitCode, OfEveryKindOfEnd) {
    const std::pair<std::int32_t, std::int32_t> cases[] = {
        {0, 0},      {0x0100, 1}, {0xFF00, 255}, {9, 137},    {0x8B, 139},
        {0x137F, 1}, {0xFFFF, 1}, {-1, 1},       {-256, 255}, {0x7FFFFF00, 255}};
    for (const auto& [status, code] : cases)
        EXPECT_EQ(Pty::exitCode(status), code) << status;
}

} // namespace
} // namespace velmo
