#include "core/terminal/Pty.h"

#include "lab/instruments/FakeDisk.h"
#include "tests/Texts.h"

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
                /bin/zsh /bin/bash /bin/rm /usr/bin/ssh /usr/local/bin/fish /opt/tools/claude
                /opt/tools/codex /opt/tools/opencode /opt/tools/agy /opt/tools/velmo-pty-fixture)"))
            disk.addProgram(program);
        linkProgram("/opt/homebrew/bin/tmux", "/opt/homebrew/Cellar/tmux/3.4/bin/tmux");
        linkProgram("/opt/homebrew/bin/ssh", "/opt/homebrew/Cellar/openssh/9/bin/ssh");
        linkProgram("/opt/linked/claude", "/opt/agents/versions/1.0.42");
        linkProgram("/opt/scripts/claude", "/opt/homebrew/Cellar/node/18/bin/node");
        disk.link("/home/me", "/Users/me");
        disk.link("/Users/me/dev/secrets", "/Users/me/.ssh");
    }

    void linkProgram(const std::string& path, const std::string& target) {
        disk.addProgram(target);
        disk.link(path, target);
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

TEST_F(PtyTest, OptionsArePairsInAnyOrder) {
    const std::string whole = "--cwd /Users/me --cols 80 --rows 24";
    expectVerdicts(
        [this](const std::string& options) { return spawn(options, {"/bin/zsh", "-l"}); },
        {whole, "--rows 500 --cols 1000 --cwd /Users/me"},
        joined({"", "--cwd --cols --cols 80 --rows 24", whole + " x", whole + " --rows 24",
                "--cwd /Users/me/../me --cols 80 --rows 24"},
               each("--cwd /Users/me #",
                    {"", "--cols 80 --rows", "--cols 80 --cols 80", "--cols 80 --row 24",
                     "--cols 80 --origin cli", "--cols 1001 --rows 24", "--cols 080 --rows 24",
                     "--cols 80 --rows 501", "--cols 80 --rows --"})));
    EXPECT_FALSE(Pty::parseSpawn(words(whole + " /bin/zsh -l"), environment, disk));
    EXPECT_FALSE(spawn(whole, {}));
}

TEST_F(PtyTest, AdmitsAClosedSetOfPrograms) {
    disk.link("/opt/tools2/agy", "/Users/me/dev/app"); // a folder can't be run
    expectCommands({"/bin/zsh -l", "/usr/local/bin/fish -l", "/opt/homebrew/bin/tmux new-session",
                    "/usr/bin/ssh -- me@host", "/opt/homebrew/bin/ssh -- host", "/opt/tools/claude",
                    "/opt/tools/claude --continue", "/opt/linked/claude", "/opt/tools/codex",
                    "/opt/tools/opencode", "/opt/tools/agy"},
                   {"/bin/missing -l", "/opt/scripts/claude", "/opt/tools2/agy"});
    disk.questions = 0;
    // A request that is invalid by its words alone is refused before the disk is asked.
    expectCommands({}, {"/bin/zsh", "/bin/zsh -i", "/opt/zsh -l", "/bin/zsh/ -l", "zsh -l",
                        "/opt/homebrew/Cellar/tmux/3.4/bin/tmux new-session", "/bin/rm -l",
                        "/opt/tools/../../bin/zsh -l", "/opt/tools/claude --print", "/opt/tools/rm",
                        "/usr/bin/ssh host", "/opt/bin/ssh -- host", "/opt/tools/agy x",
                        "/opt/tools/velmo-pty-fixture"});
    EXPECT_FALSE(run("/bin/zsh -l", "Users/me"));
    EXPECT_FALSE(spawn("--cwd /Users/me --cols 0 --rows 24", {"/bin/zsh", "-l"}));
    EXPECT_EQ(disk.questions, 0);
}

TEST_F(PtyTest, RefusesANameThatLeadsToAnotherProgram) {
    const auto runsAs = [this](const std::string& row) { // a command, " = " and where it leads
        const std::string command = row.substr(0, row.find(" = "));
        const std::string target = row.substr(command.size() + 3);
        linkProgram(words(command)[0], target);
        return run(command);
    };
    expectVerdicts(runsAs, {"/bin/zsh -l = /usr/local/Cellar/bash/5/bin/bash"},
                   {"/bin/zsh -l = /bin/rm", "/bin/zsh -l = /usr/local/Cellar/zsh/zsh-5.9",
                    "/bin/zsh -l = /opt/homebrew/Cellar/tmux/3.4/bin/tmux",
                    "/bin/zsh -l = /opt/elsewhere/zsh",
                    "/opt/homebrew/bin/tmux new-session = /bin/bash",
                    "/usr/bin/ssh -- h = /opt/elsewhere/bin/ssh",
                    "/usr/bin/ssh -- h = /opt/homebrew/Cellar/openssh/9/bin/sshx"});
}

TEST_F(PtyTest, AcceptsAnyClaudeArgumentsFromTheCommandLine) {
    const auto runs = [this](const Strings& command, const char* origin = "cli") {
        const std::string options = "--cwd /Users/me/dev/app --cols 80 --rows 24 --origin ";
        return spawn(options + origin, command).has_value();
    };
    const std::string claude = "/opt/tools/claude";
    EXPECT_TRUE(runs({claude, "--print", "any thing\n", ""}));
    EXPECT_TRUE(runs(joined({claude}, Strings(64, std::string(4096, 'a')))));
    EXPECT_FALSE(runs(joined({claude}, Strings(65, ""))));
    for (const std::string& argument : {std::string(4097, 'a'), "a\0b"s, "\xFF"s})
        EXPECT_FALSE(runs({claude, argument}));
    EXPECT_FALSE(runs({"/opt/scripts/claude", "x"})); // an interpreter stays one
    EXPECT_FALSE(runs({"/opt/tools/codex"}) || runs({"/bin/zsh", "-l"}) || runs({claude}, "CLI"));
}

TEST_F(PtyTest, WorkingFolders) {
    disk.addProgram("/Users/me/dev/file");
    const auto runsIn = [this](const char* command) {
        return [=, this](const std::string& cwd) { return run(command, cwd); };
    };
    linkProgram("/bin/zsh", "/usr/bin/zsh");
    EXPECT_EQ(run("/bin/zsh -l", "/home/me"),
              (SpawnRequest{"/Users/me", 80, 24, "/usr/bin/zsh", {"/bin/zsh", "-l"}}));
    const Strings projects{"/Users/me/dev/app", "/Users/me/dev/app/"};
    const Strings homes{"/Users/me", "/home/me"}; // directly and by way of a link
    const Strings others = words(R"(/Users/me/.ssh /Users/me/dev/secrets /Users/me/Library/x
        /Users/platform/dev /Users /elsewhere /Users/me/missing /Users/me/dev/file /bin/zsh)");
    for (const char* command : {"/bin/zsh -l", "/usr/bin/ssh -- h"})
        expectVerdicts(runsIn(command), joined(projects, homes), others);
    expectVerdicts(runsIn("/opt/tools/codex"), projects, joined(homes, others));

    environment = {};
    EXPECT_TRUE(run("/opt/tools/codex", "/Users/platform/dev"));
    for (const char* home : {"", "/missing"}) { // present, and leads nowhere
        environment["HOME"] = home;
        EXPECT_FALSE(run("/bin/zsh -l", "/Users/platform/dev")) << home;
    }
}

TEST_F(PtyTest, TheFixtureNeedsItsEnvironment) {
    const std::string fixture = "/opt/tools/velmo-pty-fixture any --thing";
    for (const char* value : {"", "0", "11", "true", "1"}) {
        environment["VELMO_PTY_TEST"] = value;
        EXPECT_EQ(run(fixture).has_value(), value == "1"s) << value;
    }
    expectCommands({}, {"/bin/rm any"});
    EXPECT_FALSE(run(fixture, "/Users/me"));
}

TEST_F(PtyTest, RunsNothingFromAFolderThatOthersCanWrite) {
    for (const std::string root : {"/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp",
                                   "/var/folders", "/private/var/folders"}) {
        for (const char* folder : {"", "/ab/T", "x"})
            disk.addProgram(root + folder + "/claude");
        expectCommands({root + "x/claude"}, {root + "/claude", root + "/ab/T/claude"});
    }
    // A valid path to an invalid file, and an invalid path to a valid one.
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

Environment environmentOf(std::string_view entries) {
    Environment environment;
    for (const std::string& entry : words(entries))
        environment[entry.substr(0, entry.find('='))] = entry.substr(entry.find('=') + 1);
    return environment;
}

TEST(PtyChildEnvironment, PassesTheListedVariablesOnly) {
    const std::string always = " TERM=xterm-256color COLORTERM=truecolor";
    const std::string path = "PATH=/usr/bin:/bin:/usr/sbin:/sbin ";
    const std::string wanted = "PATH=/p HOME=/h SSH_AUTH_SOCK=/s TMPDIR=/t USER=me LOGNAME=me "
                               "SHELL=/bin/sh LC_ALL=C LC_=x";
    Environment unwanted = environmentOf("TERM=x COLORTERM= lc_ctype=x home=x VELMO_PTY_TEST=1");
    unwanted.merge(Environment{{"LC_X=Y", "x"}, {"LC_Z\0"s, "x"}, {"LANG", "a\0b"s}});
    const std::pair<std::string, std::string> cases[] = {
        {"", path + "LANG=en_US.UTF-8"},
        {wanted, wanted},
        {"PATH= LC_ALL= LC_TIME=C", path + "LANG=en_US.UTF-8 LC_TIME=C"},
        {"LC_CTYPE=C", path + "LC_CTYPE=C"}};
    for (const auto& [entries, passed] : cases) {
        Environment given = environmentOf(entries);
        EXPECT_EQ(Pty::childEnvironment(given), environmentOf(passed + always));
        given.insert(unwanted.begin(), unwanted.end());
        EXPECT_EQ(Pty::childEnvironment(given), environmentOf(passed + always));
    }
}

TEST(PtyExitCode, FollowsFromTheWaitStatus) {
    const std::pair<std::int32_t, std::int32_t> cases[] = {
        {0, 0},      {0x0100, 1}, {0xFF00, 255}, {9, 137},    {0x8B, 139},
        {0x137F, 1}, {0xFFFF, 1}, {-1, 1},       {-256, 255}, {0x7FFFFF00, 255}};
    for (const auto& [status, code] : cases)
        EXPECT_EQ(Pty::exitCode(status), code) << status;
}

} // namespace
} // namespace velmo
