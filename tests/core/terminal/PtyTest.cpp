#include "core/terminal/Pty.h"

#include "tests/Texts.h"

#include "lab/instruments/FakeDisk.h"

namespace velmo {
namespace {

using namespace std::string_literals;
using Pty::Environment;

class PtyTest : public testing::Test {
protected:
    PtyTest() {
        for (const std::string& folder :
             words("/Users/me/dev/app /Users/me/.ssh /Users/me/Library/x"
                   " /Users/platform/dev /tmp /var/tmp /elsewhere"))
            disk.addFolder(folder);
        for (const std::string& program : words(R"(
                /bin/zsh /bin/bash /bin/rm /usr/bin/ssh /usr/local/bin/fish
                /opt/homebrew/Cellar/tmux/3.4/bin/tmux /opt/homebrew/Cellar/node/18/bin/node
                /opt/homebrew/Cellar/openssh/9/bin/ssh /opt/tools/claude /opt/tools/codex
                /opt/tools/opencode /opt/tools/agy /opt/tools/velmo-pty-fixture
                /opt/agents/versions/1.0.42)"))
            disk.addProgram(program);
        disk.link("/opt/homebrew/bin/tmux", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux");
        disk.link("/opt/homebrew/bin/ssh", "/opt/homebrew/Cellar/openssh/9/bin/ssh");
        disk.link("/opt/linked/claude", "/opt/agents/versions/1.0.42");
        disk.link("/opt/scripts/claude", "/opt/homebrew/Cellar/node/18/bin/node");
        disk.link("/home/me", "/Users/me");
        disk.link("/Users/me/dev/secrets", "/Users/me/.ssh");
    }

    std::optional<SpawnRequest> spawn(const std::string& options, const Strings& command) const {
        return Pty::parseSpawn(joined(words(options + " --"), command), environment, disk);
    }

    std::optional<SpawnRequest> run(const std::string& command,
                                    const std::string& cwd = "/Users/me/dev/app") const {
        return spawn("--cols 80 --rows 24 --cwd " + cwd, words(command));
    }

    void expectCommands(const Strings& accepted, const Strings& refused) const {
        expectVerdicts([this](const std::string& command) { return run(command); }, accepted,
                       refused);
    }

    FakeDisk disk;
    Environment environment{{"HOME", "/Users/me"}};
};

TEST_F(PtyTest, AShellMayStartInTheHomeFolder) {
    disk.link("/bin/zsh", "/usr/bin/zsh");
    disk.addProgram("/usr/bin/zsh");
    environment["HOME"] = "/home/me";
    EXPECT_EQ(run("/bin/zsh -l", "/home/me"),
              (SpawnRequest{"/Users/me", 80, 24, "/usr/bin/zsh", {"/bin/zsh", "-l"}}));
}

TEST_F(PtyTest, OptionsArePairsInAnyOrder) {
    const std::string folder = "--cwd /Users/me ";
    const std::string whole = folder + "--cols 80 --rows 24";
    expectVerdicts(
        [this](const std::string& options) { return spawn(options, {"/bin/zsh", "-l"}); },
        {whole, "--rows 500 --cols 1000 --cwd /Users/me"},
        joined({"", folder, "--cwd --cols --cols 80 --rows 24", whole + " x", whole + " --rows 24",
                whole + " --origin cli", // no claude
                "--cwd /Users/me/../me --cols 80 --rows 24"},
               each(folder + "#",
                    {"--cols 80 --rows", "--cols 80 --cols 80", "--cols 80 --row 24",
                     "--cols 80 --origin cli", "--cols 0 --rows 24", "--cols 1001 --rows 24",
                     "--cols 080 --rows 24", "--cols 80 --rows 501", "--cols 80 --rows --"})));
    EXPECT_FALSE(Pty::parseSpawn(words(whole + " /bin/zsh -l"), environment, disk));
    EXPECT_FALSE(spawn(whole, {}));
}

TEST_F(PtyTest, AdmitsAClosedSetOfPrograms) {
    disk.link("/opt/tools2/agy", "/Users/me/dev/app"); // a folder can't be run
    expectCommands(
        {"/bin/zsh -l", "/usr/local/bin/fish -l", "/opt/homebrew/bin/tmux new-session",
         "/opt/homebrew/bin/tmux attach-session", "/usr/bin/ssh -- me@host",
         "/opt/homebrew/bin/ssh -p 22 -- host", "/opt/tools/claude", "/opt/tools/claude --continue",
         "/opt/linked/claude", "/opt/tools/codex", "/opt/tools/opencode", "/opt/tools/agy"},
        {"/bin/zsh", "/bin/zsh -i", "/bin/zsh/ -l", "zsh -l", "/opt/tools/../../bin/zsh -l",
         "/opt/homebrew/bin/tmux -l", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux new-session",
         "/bin/missing -l", "/bin/rm -l", "/usr/bin/ssh host",
         "/opt/homebrew/Cellar/openssh/9/bin/ssh -- host", "/opt/tools/claude --print",
         "/opt/scripts/claude", "/opt/tools/agy x", "/opt/tools/velmo-pty-fixture",
         "/opt/tools2/agy"});
}

TEST_F(PtyTest, TheFileBehindAShellMustBeOneToo) {
    const std::pair<std::string, std::string> refused[] = {
        {"/bin/zsh -l", "/bin/rm"},
        {"/bin/zsh -l", "/usr/local/Cellar/zsh/zsh-5.9"},
        {"/bin/zsh -l", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux"},
        {"/bin/zsh -l", "/opt/elsewhere/zsh"},
        {"/opt/homebrew/bin/tmux new-session", "/bin/bash"},
        {"/usr/bin/ssh -- host", "/opt/elsewhere/bin/ssh"},
        {"/usr/bin/ssh -- host", "/opt/homebrew/Cellar/openssh/9/bin/sshx"},
    };
    for (const auto& [command, target] : refused) {
        disk.addProgram(target);
        disk.link(words(command)[0], target);
        EXPECT_FALSE(run(command)) << command << " is " << target;
    }
    disk.addProgram("/usr/local/Cellar/bash/5/bin/bash");
    disk.link("/bin/zsh", "/usr/local/Cellar/bash/5/bin/bash");
    EXPECT_TRUE(run("/bin/zsh -l"));
}

TEST_F(PtyTest, TheCommandLineOriginLiftsClaudesGrammarOnly) {
    const auto expect = [this](bool accepted, const Strings& command, const char* origin = "cli") {
        const std::string options = "--cwd /Users/me/dev/app --cols 80 --rows 24 --origin ";
        EXPECT_EQ(spawn(options + origin, command).has_value(), accepted)
            << testing::PrintToString(command);
    };
    const std::string claude = "/opt/tools/claude";
    expect(true, {claude, "--print", "any thing\n", ""});
    expect(true, joined({claude}, Strings(64, std::string(4096, 'a'))));
    expect(false, joined({claude}, Strings(65, "")));
    for (const std::string& argument : {std::string(4097, 'a'), "a\0b"s, "\xFF"s})
        expect(false, {claude, argument});
    expect(false, {"/opt/scripts/claude", "x"}); // an interpreter stays one
    expect(false, {"/opt/tools/codex"});
    expect(false, {"/bin/zsh", "-l"});
    expect(false, {claude}, "CLI");
}

TEST_F(PtyTest, WorkingFolders) {
    const std::string agent = "/opt/tools/codex";
    const Strings shells{"/bin/zsh -l", "/usr/bin/ssh -- h"};
    const auto expect = [&](bool forShell, bool forAgent, const Strings& folders) {
        for (const std::string& cwd : folders) {
            EXPECT_EQ(run(shells[0], cwd).has_value(), forShell) << cwd;
            EXPECT_EQ(run(shells[1], cwd).has_value(), forShell) << cwd;
            EXPECT_EQ(run(agent, cwd).has_value(), forAgent) << cwd;
        }
    };
    disk.addProgram("/Users/me/dev/file");
    expect(true, true, {"/Users/me/dev/app", "/Users/me/dev/app/"});
    expect(true, false,
           {"/Users/me", "/home/me"}); // the home folder, directly and by way of a link
    expect(false, false,
           {"/Users/me/.ssh", "/Users/me/dev/secrets", "/Users/me/Library/x", "/Users/platform/dev",
            "/Users", "/elsewhere", "/Users/me/missing", "/Users/me/dev/file", "/bin/zsh"});
    environment = {};
    EXPECT_TRUE(run(agent, "/Users/platform/dev"));
    for (const char* home : {"", "/missing"}) { // present, and leads nowhere
        environment["HOME"] = home;
        EXPECT_FALSE(run(shells[0], "/Users/platform/dev")) << home;
    }
}

TEST_F(PtyTest, TheFixtureNeedsItsEnvironment) {
    const std::string fixture = "/opt/tools/velmo-pty-fixture any --thing";
    for (const char* value : {"", "0", "11", "true"}) {
        environment["VELMO_PTY_TEST"] = value;
        EXPECT_FALSE(run(fixture)) << value;
    }
    environment["VELMO_PTY_TEST"] = "1";
    expectCommands({fixture}, {"/bin/rm any"});
    EXPECT_FALSE(run(fixture, "/Users/me"));
}

TEST_F(PtyTest, RunsNothingThatOthersCouldHavePutThere) {
    for (const std::string root : {"/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp",
                                   "/var/folders", "/private/var/folders"}) {
        for (const char* folder : {"", "/ab/T", "x"})
            disk.addProgram(root + folder + "/claude");
        expectCommands({root + "x/claude"}, {root + "/claude", root + "/ab/T/claude"});
    }
    // A good path to a bad file, and a bad path to a good one.
    disk.link("/opt/tools/codex", "/tmp/claude");
    disk.link("/tmp/opencode", "/opt/tools/opencode");
    expectCommands({}, {"/opt/tools/codex", "/tmp/opencode"});

    for (const char* folder : {"/opt/tools", "/opt", "/"}) {
        disk.writable = {folder};
        EXPECT_FALSE(run("/opt/tools/claude")) << folder;
    }
    disk.writable = {"/opt/agents"};
    expectCommands({"/opt/tools/claude"}, {"/opt/linked/claude"});
}

TEST_F(PtyTest, TheUsersOwnTemporaryFolderIsUnsafe) {
    disk.addProgram("/data/T/bin/claude");
    disk.link("/short", "/data/T");
    disk.addFolder("/data/T/bi");
    expectVerdicts(
        [this](const std::string& folder) {
            environment["TMPDIR"] = folder;
            return run("/data/T/bin/claude");
        },
        {"/data/T/bi", "/missing", ""}, {"/short", "/data/T/", "/data", "/"});
}

TEST_F(PtyTest, TheDiskIsAskedOnlyAfterTheWordsHavePassed) {
    expectCommands({},
                   {"/bin/zsh -i", "/opt/zsh -l", "/opt/tools/claude --print", "/opt/tools/rm",
                    "/usr/bin/ssh host", "/opt/bin/ssh -- host", "bin/zsh -l", "/opt/tools/agy x"});
    EXPECT_FALSE(run("/bin/zsh -l", "Users/me"));
    EXPECT_FALSE(spawn("--cwd /Users/me --cols 0 --rows 24", {"/bin/zsh", "-l"}));
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
