#include "core/terminal/PtyAttach.h"
#include "core/terminal/PtyFrame.h"
#include "lab/instruments/TemporaryFolder.h"
#include "lab/instruments/TerminalWindow.h"
#include "lab/instruments/WatchedProcess.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/PrivateFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <termios.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <thread>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr int refused = 123;
constexpr int hostGone = 124;

/// A session host as a real process, with a home of its own for its shells.
class SessionTest : public testing::Test {
protected:
    SessionTest() {
        prepareProcess();
        fs::create_directory(home);
        std::ofstream(home / ".profile") << "PS1='ready> '\n";
        ::setenv("HOME", home.c_str(), 1);
        folder = PrivateFolder::locate().value();
        serve();
        folder = fs::canonical(folder);
    }

    void serve() {
        host = std::make_unique<WatchedProcess>(program, std::vector<std::string_view>{"serve"});
        EXPECT_TRUE(host->waitForLine("serving in"));
    }

    [[nodiscard]] std::unique_ptr<TerminalWindow> open(std::vector<std::string> words) const {
        words.insert(words.begin(), program);
        return openProgram(std::move(words));
    }

    [[nodiscard]] std::unique_ptr<TerminalWindow>
    openProgram(std::vector<std::string> words) const {
        return std::make_unique<TerminalWindow>(
            words, Pty::Environment{{"HOME", home.string()}, {"PATH", "/usr/bin:/bin"}});
    }

    [[nodiscard]] std::string output(std::vector<std::string_view> words) const {
        return outputOf(program, words).value_or("failed");
    }

    [[nodiscard]] std::string startShell() const {
        const std::string id = output({"start", "--detached", "--", "/bin/sh"});
        return id.substr(0, id.find('\n'));
    }

    /// Asks the control socket, as another program of the host would.
    [[nodiscard]] std::string call(std::string_view line) const {
        const Descriptor socket = LocalSocket::connect((folder / "control.sock").string());
        return call(socket, line);
    }

    [[nodiscard]] static std::string call(const Descriptor& socket, std::string_view line) {
        writeAll(socket.get(), line);
        std::string reply;
        char byte = 0;
        while (::read(socket.get(), &byte, 1) == 1 && byte != '\n')
            reply += byte;
        return reply;
    }

    [[nodiscard]] std::string ticketFor(const std::string& id) const {
        const std::string reply = call(R"({"call":"ticket","session":")" + id + "\"}\n");
        return std::string(
            JsonDocument::parse(reply).value().object()->text("ticket").value_or("none"));
    }

    /// Returns the number of descriptors that the host has open, on systems that tell. The number
    /// includes the connection of a call, which is made first: once it is answered, the host has
    /// closed the connections that ended before.
    [[nodiscard]] std::ptrdiff_t openDescriptors() const {
        const Descriptor socket = LocalSocket::connect((folder / "control.sock").string());
        EXPECT_TRUE(call(socket, "{\"call\":\"list\"}\n").contains("true"));
        std::error_code none;
        return std::distance(
            fs::directory_iterator("/proc/" + std::to_string(host->pid()) + "/fd", none),
            fs::directory_iterator());
    }

    template<class Condition>
    [[nodiscard]] static bool becomes(const Condition& condition) {
        for (int i = 0; i < 4000 && !condition(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return condition();
    }

    std::string program = VELMO_SESSION;
    TemporaryFolder temporary;
    fs::path folder; ///< the private one
    fs::path home = temporary.path() / "home";
    std::unique_ptr<WatchedProcess> host;
};

TEST_F(SessionTest, ATicketAdmitsOneOfManyRacingClients) {
    const std::string ticket = ticketFor(startShell());
    constexpr int racers = 30;
    std::vector<std::unique_ptr<WatchedProcess>> all;
    for (int i = 0; i < racers; ++i)
        all.push_back(std::make_unique<WatchedProcess>(
            program, std::vector<std::string_view>{"pty-attach", "--ticket-file", ticket}));
    EXPECT_TRUE(becomes([&] { return output({"list", "--json"}).contains(R"("viewers":1)"); }));
    // An attach client without the ticket ends at once; the one that read the ticket stays until
    // the terminal session ends.
    EXPECT_EQ(output({"end", "sh"}), "");
    std::map<std::optional<int>, int> outcomes;
    for (const auto& racer : all)
        ++outcomes[racer->waitForEnd()];
    EXPECT_EQ(outcomes[refused], racers - 1);
    EXPECT_EQ(outcomes.size(), 2U);
    EXPECT_FALSE(fs::exists(ticket));
}

TEST_F(SessionTest, DeadOrInvalidPeersLeaveOtherViewersAlone) {
    const auto window = open({"start", "--", "/bin/sh"});
    ASSERT_TRUE(window->shows("ready> "));
    for (const char* socket : {"attach.sock", "control.sock"}) {
        for (const std::string_view garbage : {"", "\xFF\xFF\xFF\xFF\xFF\xFF", "{\"call\":\n"}) {
            const Descriptor peer = LocalSocket::connect((folder / socket).string());
            EXPECT_TRUE(writeAll(peer.get(), garbage));
        }
    }
    auto killed = open({"attach", "sh"});
    ASSERT_TRUE(killed->shows("ready> "));
    killed->signal(SIGKILL);
    killed.reset();
    window->type("echo still-$((1))\r");
    EXPECT_TRUE(window->shows("\nstill-1"));
    EXPECT_TRUE(becomes([&] { return output({"list", "--json"}).contains(R"("viewers":1)"); }));
}

TEST_F(SessionTest, TheTerminalIsRestoredHoweverTheViewEnds) {
    const std::string id = startShell();
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT, SIGINT, SIGUSR1, SIGUSR2, SIGALRM, 0}) {
        const auto window = open({"attach", id});
        ASSERT_TRUE(window->shows("ready> "));
        termios during{};
        ASSERT_EQ(::tcgetattr(window->get(), &during), 0);
        EXPECT_EQ(during.c_lflag & (ICANON | ECHO | ISIG), 0U) << "raw";
        if (signal == 0)
            host->signal(SIGKILL);
        else
            window->signal(signal);
        EXPECT_TRUE(window->shows(PtyAttach::reset.substr(0, PtyAttach::reset.size() - 2)));
        termios after{};
        EXPECT_TRUE(becomes([&] {
            return ::tcgetattr(window->get(), &after) != 0
                   || (after.c_lflag & (ICANON | ECHO | ISIG)) == (ICANON | ECHO | ISIG);
        }));
        EXPECT_EQ(window->waitForEnd(), signal == 0 ? hostGone : 128 + signal);
    }
}

TEST_F(SessionTest, AnIgnoredHangUpDoesNotEndTheView) {
    const auto window =
        openProgram({"/bin/sh", "-c", "trap '' HUP; exec " + program + " attach " + startShell()});
    ASSERT_TRUE(window->shows("ready> "));
    window->signal(SIGHUP);
    window->type("echo still-$((1))\r");
    EXPECT_TRUE(window->shows("\nstill-1"));
    window->close();
    EXPECT_EQ(window->waitForEnd(), 128 + SIGHUP)
        << "but without a window there is nothing to view";

    // A viewer without any typing learns only from its output that the window is gone.
    const std::string fifo = (home / "fifo").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const auto typist = open({"attach", "sh"});
    ASSERT_TRUE(typist->shows("ready> "));
    const auto shown =
        openProgram({"/bin/sh", "-c", "trap '' HUP; exec " + program + " attach sh 0<>" + fifo});
    ASSERT_TRUE(shown->shows("ready> "));
    shown->close();
    typist->type("echo unseen\r");
    EXPECT_EQ(shown->waitForEnd(), 128 + SIGHUP);
}

TEST_F(SessionTest, KeysTypedBeforeTheHostAnswersReachTheProgram) {
    const std::string ticket = ticketFor(startShell());
    host->signal(SIGSTOP);
    const auto window = open({"pty-attach", "--ticket-file", ticket});
    termios modes{};
    EXPECT_TRUE(becomes(
        [&] { return ::tcgetattr(window->get(), &modes) == 0 && (modes.c_lflag & ICANON) == 0; }));
    for (const int rows : {20, 21, 22, 23})
        window->resize({.cols = 80, .rows = rows});
    window->type("echo early-$((1))\r");
    EXPECT_TRUE(becomes([&] { return !fs::exists(ticket); }));
    host->signal(SIGCONT);
    EXPECT_TRUE(window->shows("early-1"));
}

TEST_F(SessionTest, AStoppedViewerSetsRawModeAgainWhenContinued) {
    const auto window = open({"start", "--", "/bin/sh"});
    ASSERT_TRUE(window->shows("ready> "));
    termios modes{};
    ASSERT_EQ(::tcgetattr(window->get(), &modes), 0);
    const termios raw = modes;
    window->signal(SIGSTOP);
    modes.c_lflag |= ICANON | ECHO | ISIG; // as the shell sets it that has the terminal meanwhile
    ASSERT_EQ(::tcsetattr(window->get(), TCSANOW, &modes), 0);
    window->signal(SIGCONT);
    EXPECT_TRUE(becomes(
        [&] { return ::tcgetattr(window->get(), &modes) == 0 && modes.c_lflag == raw.c_lflag; }));
}

TEST_F(SessionTest, SessionsAndViewersLeaveNothingBehind) {
    const std::string id = startShell();
    EXPECT_TRUE(open({"attach", id})->shows("ready> "));
    EXPECT_TRUE(becomes([&] { return output({"list", "--json"}).contains(R"("viewers":0)"); }));
    const auto before = openDescriptors();
    for (int i = 0; i < 10; ++i) {
        const auto window = open({"attach", id});
        ASSERT_TRUE(window->shows("ready> "));
        if (i % 2 == 0) {
            window->type("\x1D"
                         "d");
            EXPECT_EQ(window->waitForEnd(), 0);
        }
        const std::string other = startShell();
        EXPECT_EQ(output({"end", other}), "");
    }
    EXPECT_TRUE(becomes([&] { return openDescriptors() == before; })) << openDescriptors();
    EXPECT_TRUE(becomes([&] {
        const std::string children = "/proc/" + std::to_string(host->pid()) + "/task/"
                                     + std::to_string(host->pid()) + "/children";
        std::ifstream file(children);
        int count = 0;
        for (int child = 0; file >> child;)
            ++count;
        return !fs::exists(children) || count == 1;
    }));
    for (const auto& file : fs::directory_iterator(folder))
        EXPECT_FALSE(PtyAttach::isTicketName(file.path().filename().string()));
}

TEST_F(SessionTest, AProgramGetsThreeDescriptorsAndItsOwnTerminal) {
    const auto window = open({"start", "--", "/bin/sh"});
    ASSERT_TRUE(window->shows("ready> "));
    window->type("for f in 3 4 5 6 7 8 9 10 11 12; do (: <&$f) 2>/dev/null && echo open-$f; done; "
                 "ps -o sid= -p $$ | tr -d ' '; echo me-$$ end\r");
    EXPECT_TRUE(window->shows("\nme-"));
    EXPECT_TRUE(window->shows(" end"));
    EXPECT_THAT(window->shown(), testing::Not(HasSubstr("\nopen-")));
}

TEST_F(SessionTest, ASessionIsNotShownInItselfByAProcessInASessionOfItsOwn) {
    const auto window = open({"start", "--name", "outer", "--", "/bin/sh"});
    ASSERT_TRUE(window->shows("ready> "));
    window->type("setsid -w sh -c '" + program + " attach outer; echo status-$?'\r");
    EXPECT_TRUE(window->shows("(itself)"));
    EXPECT_TRUE(window->shows("\nstatus-" + std::to_string(refused)));
    window->type(program + " list --json\r");
    EXPECT_TRUE(window->shows(R"("name":"outer")")) << "a session finds its own host";
}

TEST_F(SessionTest, AWatchedListShowsWhatAsksForAPerson) {
    const std::string id = startShell();
    WatchedProcess watch(program, std::vector<std::string_view>{"list", "--watch", "--json"});
    EXPECT_TRUE(watch.waitForLine(R"("viewers":0)"));
    const auto viewer = open({"attach", "--view-only", id});
    const auto window = open({"attach", id});
    ASSERT_TRUE(viewer->shows("ready> "));
    ASSERT_TRUE(window->shows("ready> "));
    window->type("printf '\\033]9;look-%s\\a' here\r");
    EXPECT_TRUE(watch.waitForLine(R"("notice":"look-here")"));
    EXPECT_THAT(output({"list"}), HasSubstr(": look-here\n"));
    viewer->type("exit\r"); // which reaches nothing
    window->type("echo still-$((1))\r");
    EXPECT_TRUE(viewer->shows("\nstill-1"));
    EXPECT_TRUE(watch.waitForLine(R"("viewers":2)"));
    EXPECT_THAT(output({"list"}), testing::Not(HasSubstr("look-here"))) << "he has looked";
}

TEST_F(SessionTest, AttachesToTheSessionOfANameOrCreatesIt) {
    const std::vector<std::string_view> detached{"start",      "-A", "work",
                                                 "--detached", "--", "/bin/sh"};
    const std::string id = output(detached);
    EXPECT_TRUE(id.starts_with("s_"));
    EXPECT_EQ(output(detached), id);
    const auto window = open({"start", "--attach-or-create", "work", "--detach-key", "C-a"});
    ASSERT_TRUE(window->shows("ready> "));
    window->type("\x1D"
                 "d\r");
    EXPECT_TRUE(window->shows("not found")) << "Control-] is an ordinary key";
    window->type("\x01"
                 "d");
    EXPECT_TRUE(window->shows("velmo-session attach work"));
    EXPECT_EQ(window->waitForEnd(), 0);
    EXPECT_EQ(output({"end", "work"}), "");
    EXPECT_TRUE(becomes([&] { return output({"list", "--json"}).contains("exitCode"); }));
    EXPECT_NE(output(detached), id);
    std::vector<std::unique_ptr<WatchedProcess>> racers;
    std::set<std::string> ids;
    std::vector<std::string_view> racing = detached;
    racing[2] = "race";
    for (int i = 0; i < 8; ++i)
        racers.push_back(std::make_unique<WatchedProcess>(program, racing));
    for (const auto& racer : racers) {
        EXPECT_EQ(racer->waitForEnd(), 0);
        std::ranges::copy_if(racer->lines(), std::inserter(ids, ids.end()),
                             [](const std::string& line) { return line.starts_with("s_"); });
    }
    EXPECT_EQ(ids.size(), 1U) << "all that start at once share one session";
    for (const char* key : {"C-m", "C-i", "C-[", "a", "", "C-", "C-1", "M-a", "^aa"})
        EXPECT_EQ(open({"attach", "--detach-key", key})->waitForEnd(), 122) << key;
}

TEST_F(SessionTest, AStreamWhoseOutputIsNotReadStillTakesInput) {
    const std::string id = startShell();
    const auto window = open({"attach", id});
    ASSERT_TRUE(window->shows("ready> "));
    auto input = makePipe();
    auto output = makePipe();
    ASSERT_TRUE(input && output);
    const auto stream = startChild(program, std::vector<std::string_view>{"stream", id},
                                   {.standardInput = input->readEnd.get(),
                                    .standardOutput = output->writeEnd.get(),
                                    .standardError = STDERR_FILENO});
    ASSERT_TRUE(stream);
    output->writeEnd.reset();
    window->type("seq 30000; echo printed-$((1))\r");
    ASSERT_TRUE(window->shows("\nprinted-1"));
    writeAll(input->writeEnd.get(), textOf(PtyFrame::data(bytesOf("echo typed-$((2))\r"))));
    EXPECT_TRUE(window->shows("\ntyped-2"));
    input->writeEnd.reset();
    EXPECT_TRUE(readToEnd(output->readEnd.get(), 8 << 20));
    EXPECT_EQ(waitForChild(*stream), 0);
}

TEST_F(SessionTest, AScriptTypesIntoASessionAndWaitsForItsEnd) {
    const std::string id = startShell();
    WatchedProcess waiting(program, std::vector<std::string_view>{"wait", id});
    const auto window = open({"attach", id});
    ASSERT_TRUE(window->shows("ready> "));
    EXPECT_EQ(output({"send", "sh", "echo", "Space", "sent-$((1))", "Enter"}), "");
    EXPECT_TRUE(window->shows("\nsent-1"));
    EXPECT_THAT(output({"peek", "sh"}), HasSubstr("\nsent-1\n"));
    EXPECT_EQ(output({"peek", "--lines", "1", "sh"}), "ready>\n");
    EXPECT_THAT(output({"peek", "--json", "sh"}), HasSubstr(R"(,"sent-1","ready>"],"rows":)"));
    EXPECT_EQ(output({"detach", "sh"}), "");
    EXPECT_TRUE(window->shows("Detached."));
    EXPECT_EQ(window->waitForEnd(), 0);
    const auto again = open({"attach", "--lines", "1", "sh"});
    ASSERT_TRUE(again->shows("ready> "));
    EXPECT_THAT(again->shown(), testing::Not(HasSubstr("sent-1")));
    EXPECT_EQ(output({"send", "sh", "--", "exit 7", "\r"}), "");
    EXPECT_EQ(waiting.waitForEnd(), 7);
    WatchedProcess late(program, std::vector<std::string_view>{"wait", id});
    EXPECT_EQ(late.waitForEnd(), 7);
}

TEST_F(SessionTest, AProgramThatAsksItsTerminalBeforeAnyViewerComesIsAnsweredOnce) {
    std::ofstream(home / ".profile") << "stty -icanon -echo; printf '12\\033[6n'\n"
                                        "answer=$(dd bs=1 count=6 2>/dev/null | tr '\\033' e)\n"
                                        "stty icanon echo; PS1='ready> '; echo \"=$answer=\"\n";
    const std::string id = startShell();
    EXPECT_TRUE(becomes([&] { return output({"peek", id}).contains("=e[1;3R=\nready>"); }))
        << output({"peek", id});
    const auto window = open({"attach", id});
    ASSERT_TRUE(window->shows("ready> "));
    window->type("echo typed-$((1))\r");
    EXPECT_TRUE(window->shows("\ntyped-1"));
    EXPECT_THAT(window->shown(), testing::Not(HasSubstr("\033[6n")));
}

TEST_F(SessionTest, TheSshAgentOfASessionIsThatOfTheLastViewer) {
    const auto openWith = [&](const std::string& agent, const std::string& words) {
        auto window = openProgram(
            {"/bin/sh", "-c", "SSH_AUTH_SOCK=" + agent + " exec " + program + " " + words});
        EXPECT_TRUE(window->shows("ready> "));
        window->type("readlink $SSH_AUTH_SOCK\r");
        EXPECT_TRUE(window->shows("\n" + agent + "\r"));
        return window;
    };
    const auto first = openWith("/first", "start -- /bin/sh");
    const auto second = openWith("/second", "attach sh");
}

TEST_F(SessionTest, WritesATranscriptThatCanBeReadMeanwhileAndAfterwards) {
    const std::string start = program + " start --transcript out/../shown -- /bin/sh";
    const auto window = openProgram({"/bin/sh", "-c", "cd; mkdir out; exec " + start});
    ASSERT_TRUE(window->shows("ready> "));
    const auto transcript = [this] {
        std::ifstream file(home / "shown");
        return std::string(std::istreambuf_iterator(file), {});
    };
    EXPECT_TRUE(becomes([&] { return transcript() == "ready> "; })) << transcript();
    const auto second = openProgram({"/bin/sh", "-c", "cd; exec " + start});
    EXPECT_TRUE(second->shows("shown: another session writes its transcript there"));
    EXPECT_EQ(second->waitForEnd(), refused);
    window->type("printf '\\033[1mbo%s\\033[m' ld; exit 3\r");
    EXPECT_EQ(window->waitForEnd(), 3);
    EXPECT_THAT(transcript(), HasSubstr("\033[1mbold\033[m"));
    EXPECT_TRUE(openProgram({"/bin/sh", "-c", "cd; exec " + start})->shows("ready> "))
        << "another session continues it";
}

TEST_F(SessionTest, SaysWhyItDoesNotDoWhatWasAsked) {
    const struct {
        std::string words;
        std::string reason;
        int status;
    } cases[] = {
        {"attach sh </dev/null >log", "there is no terminal to show a session in", refused},
        {"start </dev/null >log", "there is no terminal to show a session in", refused},
        {"list >/dev/full", "standard output can't be written", 125},
        {"list --json >/dev/full", "standard output can't be written", 125},
        {"--help >/dev/full", "standard output can't be written", 125},
        {"start --detached -- vi notes",
         "these may, where the system or Homebrew has installed "
         "them: bash, zsh",
         refused},
        {"attach --lines x", "--lines takes a number", 122},
        {"wait", "wait needs an id or a name", 122},
        {"wait nobody", "there is no such session", refused},
        {"peek nobody", "there is no such session", refused},
        {"peek", "peek needs an id or a name", 122},
        {"send nobody Enter", "there is no such session", refused},
        {"start -A a --name b", "leave out --name", 122},
        {"start --detached -- ssh -x", "ssh: the program may not be started with these", refused},
        {"attach nobody", "there is no such session", refused},
        {"start --detached --transcript . -- sh", "is written to a plain file of yours", refused},
        {"start --detached --transcript a/b -- sh", "a/b: a transcript is written to", refused},
    };

    for (const auto& c : cases) {
        const auto window = openProgram(
            {"/bin/sh", "-c", "cd; exec 2>&1 3>&1; " + program + " " + c.words + " 2>&3"});
        EXPECT_TRUE(window->shows(c.reason)) << c.words << "\n" << window->shown();
        EXPECT_EQ(window->waitForEnd(), c.status) << c.words;
    }
    EXPECT_EQ(output({"list", "--json"}), "[]\n") << "nothing was started";
    if (fs::exists("/usr/bin/ssh")) {
        EXPECT_TRUE(
            output({"start", "--detached", "--", "ssh", "-p", "1", "localhost"}).starts_with("s_"))
            << "the target gets its --";
    }
}

TEST_F(SessionTest, RefusesToServeInAFolderThatIsNotPrivate) {
    struct stat status{};
    EXPECT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    for (const char* socket : {"control.sock", "attach.sock"}) {
        EXPECT_EQ(::stat((folder / socket).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U) << socket;
    }
    host->signal(SIGTERM);
    EXPECT_EQ(host->waitForEnd(), 0);
    EXPECT_FALSE(fs::exists(folder / "control.sock"));
    fs::rename(folder, temporary.path() / "aside");
    fs::create_directory_symlink(temporary.path() / "aside", folder);
    WatchedProcess second(program, std::vector<std::string_view>{"serve"});
    EXPECT_TRUE(second.waitForLine("can't be made"));
    EXPECT_EQ(output({"list", "--json"}), "[]\n");
}

TEST_F(SessionTest, StartsAHostAndReplacesAStaleSocket) {
    host->signal(SIGKILL);
    EXPECT_EQ(host->waitForEnd(), 128 + SIGKILL);
    EXPECT_TRUE(fs::exists(folder / "control.sock"));
    std::ofstream(folder / "control.sock.new") << "of a host that was killed while it began";
    const auto window =
        openProgram({"/bin/sh", "-c", "exec 9</etc/passwd; exec \"$0\" start -- /bin/sh", program});
    ASSERT_TRUE(window->shows("ready> "));
    pid_t served = 0;
    std::ifstream(folder / "host.lock") >> served;
    ASSERT_GT(served, 0);
    EXPECT_NE(served, host->pid());
    std::error_code none; // on systems that tell, the starter's descriptors are not the host's
    EXPECT_NE(fs::read_symlink("/proc/" + std::to_string(served) + "/fd/9", none), "/etc/passwd");
    window->type("exit 3\r");
    EXPECT_EQ(window->waitForEnd(), 3);
    ::kill(served, SIGTERM);
    EXPECT_TRUE(becomes([&] { return !fs::exists(folder / "control.sock"); }));
}

TEST_F(SessionTest, AHostWhoseFolderIsGoneServesInANewOneUnlessAnotherHostDoes) {
    ::setenv("SSH_AUTH_SOCK", "/agent", 1);
    const std::string id = startShell();
    ::unsetenv("SSH_AUTH_SOCK");
    const fs::path link = folder / ("ssh-" + id);
    EXPECT_EQ(fs::read_symlink(link), "/agent");
    fs::remove_all(folder);
    EXPECT_EQ(output({"list", "--json"}), "[]\n");
    host->signal(SIGUSR1);
    EXPECT_TRUE(host->waitForLine("serving in " + folder.string() + " anew"));
    EXPECT_TRUE(becomes([&] { return fs::is_symlink(link); })) << "the agent is found again";
    EXPECT_THAT(output({"list", "--json"}), HasSubstr(id));
    EXPECT_TRUE(open({"attach", id})->shows("ready> "));

    fs::remove_all(folder);
    WatchedProcess second(program, std::vector<std::string_view>{"serve"});
    EXPECT_TRUE(second.waitForLine("serving in"));
    const std::string other = startShell();
    // The second look's line comes after all that the first look does.
    for (int look = 0; look < 2; ++look) {
        host->signal(SIGUSR1);
        EXPECT_TRUE(host->waitForLine("serves already: process " + std::to_string(second.pid())));
    }
    EXPECT_THAT(output({"list", "--json"}), HasSubstr(other));
    second.signal(SIGTERM);
    EXPECT_EQ(second.waitForEnd(), 0);
    host->signal(SIGUSR1);
    EXPECT_TRUE(host->waitForLine("anew"));
    EXPECT_THAT(output({"list", "--json"}), HasSubstr(id));

    fs::remove(folder / "host.lock");
    WatchedProcess third(program, std::vector<std::string_view>{"serve"});
    EXPECT_TRUE(third.waitForLine("serving in"));
    host->signal(SIGTERM);
    EXPECT_EQ(host->waitForEnd(), 0);
    EXPECT_TRUE(fs::exists(folder / "control.sock")) << "which the other host has made";
}

TEST_F(SessionTest, StartSaysAtOnceWhyNoHostCanServe) {
    host.reset();
    const auto start = [&](const std::string& reason) {
        const auto window = open({"start", "--", "/bin/sh"});
        EXPECT_TRUE(window->shows("velmo-session: ") && window->shows(reason)) << window->shown();
        EXPECT_EQ(window->waitForEnd(), hostGone);
    };
    fs::remove_all(folder);
    std::ofstream(folder) << "a file in the folder's place";
    start("can't be made");
    fs::remove(folder);
    fs::create_directories(folder / "host.lock");
    start("host.lock can't be made");
}

} // namespace
} // namespace velmo
