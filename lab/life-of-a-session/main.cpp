/// Plays one whole life of a terminal session with real processes, real pseudo-terminals and a real
/// shell, and prints what happens in words. Every step is checked; the first that fails ends the
/// play with status 1.

#include "core/terminal/PtyFrame.h"
#include "lab/instruments/PlaySteps.h"
#include "lab/instruments/TemporaryFolder.h"
#include "lab/instruments/TerminalWindow.h"
#include "lab/instruments/WatchedProcess.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"

#include <fcntl.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace velmo;
namespace fs = std::filesystem;

constexpr int refused = 123;
constexpr int hostGone = 124;

class Play {
public:
    Play() {
        fs::create_directory(home_);
        std::ofstream(home_ / ".bash_profile")
            << "PS1='ready> '\nbind 'set enable-bracketed-paste off'\n";
        ::setenv("HOME", home_.c_str(), 1); // of programs without a window
    }

    void run() {
        hostServes();
        shellStarts();
        windowIsResized();
        viewerDetachesAndAnotherContinues();
        twoWatch();
        oneReadsSlowly();
        phoneContinues();
        windowsAreClosed();
        programEnds();
        hostIsKilled();
    }

private:
    using Window = std::unique_ptr<TerminalWindow>;

    [[nodiscard]] Window open(std::vector<std::string> words,
                              PtyFrame::Size size = {.cols = 80, .rows = 24}) const {
        words.insert(words.begin(), program_);
        const Pty::Environment environment{
            {"HOME", home_.string()}, {"PATH", "/usr/bin:/bin"}, {"SHELL", "/bin/bash"}};
        return std::make_unique<TerminalWindow>(words, environment, size);
    }

    /// Runs a command that needs no window, and returns what it printed.
    std::string output(std::vector<std::string_view> words) const {
        return outputOf(program_, words).value_or("failed");
    }

    [[nodiscard]] bool lists(std::string_view text) const {
        for (int i = 0; i < 400 && !output({"list"}).contains(text); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return output({"list"}).contains(text);
    }

    void hostServes() {
        say("The session host starts.");
        host_ =
            std::make_unique<WatchedProcess>(program_, std::vector<std::string_view>{"serve"},
                                             [](const std::string& line) { say("  | " + line); });
        require(host_->waitForLine("serving in"), "it serves");
        WatchedProcess second(program_, std::vector<std::string_view>{"serve"});
        require(second.waitForLine("serves already: process " + std::to_string(host_->pid())),
                "a second one says who serves already");
        require(second.waitForEnd() == refused, "it ends");
    }

    void shellStarts() {
        say("A person starts a shell in a window.");
        first_ = open({"start", "--name", "work", "--", "bash"});
        require(first_->shows("ready> "), "the shell is ready");
        first_->type("echo $0 sum $((40 + 2)); ls -l /proc/self/fd 2>/dev/null | wc -l\r");
        require(first_->shows("-bash sum 42"), "it is a log-in shell, and does what is typed");
        require(first_->shows("ready> "), "it is ready again");
        const Window bad = open({"start", "--", "bash", "-c", "id"});
        require(bad->shows("may not be started with these arguments"),
                "what the policy does not allow is refused");
        require(bad->waitForEnd() == refused, "and its window ends");
    }

    void windowIsResized() {
        say("The window is made wider.");
        first_->resize({.cols = 132, .rows = 40});
        require(shellHasSize(*first_, "40 132"), "the shell's terminal has the new size");
    }

    static bool shellHasSize(TerminalWindow& window, std::string_view size) {
        for (int i = 0; i < 100; ++i) {
            window.type("echo size: $(stty size)\r");
            if (!window.shows("\nsize: ") || !window.shows("ready> "))
                return false;
            if (window.shown().substr(window.shown().rfind("\nsize: ")).contains(size))
                return true;
        }
        return false;
    }

    void viewerDetachesAndAnotherContinues() {
        say("The person detaches: Control-] and d.");
        first_->type("\x1D"
                     "d");
        require(first_->shows("Detached."), "the viewer says so");
        require(first_->waitForEnd() == 0, "and ends with status 0");
        require(lists("detached"), "the session goes on without anybody");
        say("Another window continues it.");
        first_ = open({"attach", "work"});
        require(first_->shows("sum 42"), "what was shown before is there");
        require(first_->shows("ready> "), "and the prompt");
        require(shellHasSize(*first_, "24 80"), "the shell's terminal has this window's size");
    }

    void twoWatch() {
        say("A second window joins, and both see what either types.");
        second_ = open({"attach", "work"}, {.cols = 60, .rows = 20});
        require(second_->shows("sum 42"), "the second has been shown the session");
        require(shellHasSize(*second_, "20 60"), "who came last decides the size");
        first_->type("echo from-$((1))\r");
        require(first_->shows("\nfrom-1"), "the first sees it");
        require(second_->shows("\nfrom-1"), "the second sees it");
        require(shellHasSize(*first_, "24 80"), "who typed last decides the size");
    }

    void oneReadsSlowly() {
        say("The second window does not read while 3 MiB are printed.");
        first_->type("head -c 3000000 /dev/zero | tr '\\0' y; echo; echo done-$((2))\r");
        require(first_->shows("\ndone-2"), "the first window gets all of it");
        require(second_->shows("done-2"), "the second catches up when it reads again");
        require(first_->shows("ready> "), "the shell is ready");
    }

    void phoneContinues() {
        say("A phone's bridge continues the session in frames.");
        auto toBridge = makePipe();
        // The replay is longer than a pipe takes, and a bridge that can't write reads no keys.
        const fs::path file = home_ / "frames";
        const Descriptor fromBridge(::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        require(toBridge && fromBridge, "there are a pipe and a file");
        const auto bridge = startChild(program_, std::vector<std::string_view>{"stream", "work"},
                                       {.standardInput = toBridge->readEnd.get(),
                                        .standardOutput = fromBridge.get(),
                                        .standardError = STDERR_FILENO});
        writeAll(toBridge->writeEnd.get(), textOf(PtyFrame::resize(50, 10).value()));
        writeAll(toBridge->writeEnd.get(), textOf(PtyFrame::data(bytesOf("echo p$((5))\r"))));
        require(first_->shows("\np5"), "what the bridge types is seen in the window");
        toBridge->writeEnd.reset();
        require(waitForChild(bridge.value()) == 0, "it ends with its input, with status 0");
        std::ifstream written(file, std::ios::binary);
        const std::string all(std::istreambuf_iterator<char>(written), {});
        const auto frames = PtyFrame::Decoder().feed(bytesOf(all));
        require(frames && frames->front().kind == PtyFrame::Kind::ready && frames->size() > 1,
                "the bridge got whole frames: ready, then output");
    }

    void windowsAreClosed() {
        say("The second window is closed, and the first viewer is killed.");
        second_->close();
        first_->signal(SIGKILL);
        require(lists("detached"), "the session goes on without anybody");
        second_.reset();
        first_ = open({"attach"});
        require(first_->shows("ready> "), "the only session needs no name");
    }

    void programEnds() {
        say("The shell exits with 7.");
        first_->type("exit 7\r");
        require(first_->shows("The program ended (code 7)."), "the viewer says so");
        require(first_->waitForEnd() == 7, "and ends with status 7");
        first_ = open({"attach", "work"});
        require(first_->shows("This session had already ended."), "who comes late is told");
        require(first_->waitForEnd() == refused, "and ends with a status of its own");
    }

    void hostIsKilled() {
        say("A last shell runs, and the host is killed with SIGKILL.");
        first_ = open({"start", "--", "bash"});
        require(first_->shows("ready> "), "the shell is ready");
        const std::string hungUp = (folder_.path() / "hung-up").string();
        first_->type("sh -c 'trap \"echo > " + hungUp
                     + "; exit\" HUP; echo trapped-$((3)); while :; do sleep 0.05; done'\r");
        require(first_->shows("\ntrapped-3"), "a program in it waits for a hang-up");
        host_->signal(SIGKILL);
        require(first_->shows("Velmo closed, and the session ended with it."),
                "the viewer says that Velmo closed");
        require(first_->waitForEnd() == hostGone, "and ends with a status of its own");
        for (int i = 0; i < 2000 && !fs::exists(hungUp); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        require(fs::exists(hungUp), "the program was hung up on");
        host_.reset();
        hostServes();
        host_->signal(SIGTERM);
        require(host_->waitForEnd() == 0, "the next host finds everything in order, and ends");
    }

    TemporaryFolder folder_;
    fs::path home_ = folder_.path() / "home";
    std::string program_ = (ownExecutable().parent_path() / VELMO_SESSION).string();
    std::unique_ptr<WatchedProcess> host_;
    Window first_;
    Window second_;
};

} // namespace

int main() {
    prepareProcess();
    try {
        Play().run();
        say("Everything that was started has ended.");
    } catch (const std::exception& error) {
        say(std::string("FAILED: ") + error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
