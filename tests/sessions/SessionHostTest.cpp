#include "sessions/SessionHost.h"

#include "core/support/Text.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/PtyFrame.h"
#include "lab/instruments/AnyValues.h"
#include "lab/instruments/SessionWorld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <set>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// What puts the lines of a terminal of this height out of a replay's way.
std::string scrolledAway(std::size_t rows) {
    return "\r" + std::string(rows, '\n') + "\033[H";
}

const std::string endOfRegion = "\0337\033[r\0338";

/// The output and the messages that a viewer was sent.
struct Seen {
    std::string output;
    std::vector<std::string> messages;
    bool isWhole = true;
};

struct Window {
    int cols = 80;
    int rows = 24;
    std::size_t room = SIZE_MAX; ///< bytes that it reads at first
    bool viewOnly = false;
};

PeerId attachWindow(SessionWorld& world, const std::string& session, const Window& window) {
    const auto ticket = world.ticketFor(session, window.viewOnly);
    const PeerId peer = world.connect(SessionHost::Door::attach);
    world.peers[peer]->room = window.room;
    world.receive(peer, PtyAttach::hello(ticket.value().token, window.cols, window.rows).value());
    return peer;
}

class SessionHostTest : public testing::Test {
protected:
    /// Attaches a window that may look only.
    PeerId attachToView(const std::string& session, int cols, int rows) {
        return attachWindow(world, session, {.cols = cols, .rows = rows, .viewOnly = true});
    }

    PeerId attach(const std::string& session, int cols = 80, int rows = 24,
                  std::size_t room = SIZE_MAX) {
        return attachWindow(world, session, {.cols = cols, .rows = rows, .room = room});
    }

    PeerId stream(const std::string& session) {
        const PeerId peer = world.connect(Door::control);
        world.receive(peer, R"({"call":"stream","session":")" + session + "\"}\n");
        return peer;
    }

    /// Sends a control message unchanged.
    void tell(PeerId peer, std::string_view message) {
        const char length = static_cast<char>(message.size());
        world.receive(peer, std::string({6, 0, 0, 0, length}).append(message));
    }

    void type(PeerId peer, std::string_view keys) {
        world.receive(peer, PtyAttach::data(bytesOf(keys)));
    }

    void write(std::string_view output) {
        world.program().output += output;
        world.settle();
    }

    /// Returns everything that a window was sent.
    Seen seen(PeerId peer) {
        Seen result;
        PtyAttach::Decoder decoder;
        const auto frames = decoder.feed(bytesOf(world.peers.at(peer)->received));
        result.isWhole = decoder.buffered() == 0;
        EXPECT_TRUE(frames);
        for (const auto& frame : *frames) {
            if (const auto* const output = std::get_if<Bytes>(&frame))
                result.output += textOf(*output);
            else
                result.messages.emplace_back(
                    std::get<PtyAttach::ControlObject>(frame).object().text("t").value());
        }
        return result;
    }

    using Door = SessionHost::Door;
    SessionWorld world;
};

TEST_F(SessionHostTest, StartsWhatThePolicyAllowsAndSaysWhatItRefused) {
    struct Case {
        std::vector<std::string> command;
        std::string folder;
        std::string_view reason;
    };

    const Case cases[] = {
        {{"/bin/bash", "-l"}, "/home/me/dev", ""},
        {{"/bin/bash", "-c", "id"}, "/home/me", "words"},
        {{"/usr/bin/ssh", "--", "-oProxyCommand=id"}, "/home/me", "words"},
        {{"/usr/bin/python3"}, "/home/me", "program"},
        {{"/bin/zsh", "-l"}, "/home/me", "program"},
        {{"/bin/bash", "-l"}, "/home/me/.ssh", "folder"},
        {{"/usr/bin/claude"}, "/home/me", "folder"},
        {{}, "/home/me", "words"},
    };
    for (const Case& c : cases) {
        SessionCallLine call = SessionWorld::startCall();
        call.words->resize(7);
        call.words->at(1) = c.folder;
        call.words->insert(call.words->end(), c.command.begin(), c.command.end());
        call.environment = {"LANG=de", "SECRET=1", "LC_ALL=a=b", "nonsense", "HOME=/home/me"};
        const auto reply = world.call(call);
        EXPECT_EQ(reply.ok, c.reason.empty()) << testing::PrintToString(c.command);
        EXPECT_EQ(reply.reason.value_or(""), c.reason) << testing::PrintToString(c.command);
        EXPECT_EQ(PtyAttach::isSessionId(reply.session.value_or("")), c.reason.empty());
    }
    EXPECT_EQ(world.programs.size(), 1U);
    EXPECT_EQ(world.lastRequest.cwd, "/home/me/dev");
    EXPECT_FALSE(world.lastEnvironment.contains("SECRET"));
    EXPECT_EQ(world.lastEnvironment.at("LC_ALL"), "a=b");
    EXPECT_EQ(world.lastEnvironment.at("TERM"), "xterm-256color");
    world.startFails = true;
    EXPECT_EQ(world.call(SessionWorld::startCall()).reason, "system");
}

TEST_F(SessionHostTest, CleansNamesAndRefusesOnesInUse) {
    SessionCallLine call = SessionWorld::startCall();
    call.name = "a\033]2;b\a\xE2\x80\xAE";
    EXPECT_TRUE(world.call(call).ok);
    EXPECT_EQ(world.call(call).reason, "name");
    const std::string tooLong(999, 'x');
    std::string wide;
    while (wide.size() < 300)
        wide += "\xF0\x9F\x98\x80";
    for (const std::string& bad :
         {std::string("\a"), std::string("s_0123456789abcdef"), wide, tooLong}) {
        call.name = bad;
        EXPECT_EQ(world.call(call).reason.value_or("cut"), bad == tooLong ? "cut" : "misnamed");
    }
    world.startShell();
    world.startShell();
    std::vector<std::string> names;
    const auto listed = world.call({.call = SessionCall::list}).sessions.value();
    for (const auto& entry : listed)
        names.push_back(entry.name);
    EXPECT_THAT(names, ElementsAre("a]2;b", std::string(120, 'x'), "bash", "bash-2"));
    EXPECT_TRUE(world.call({.call = SessionCall::ticket, .session = "bash-2"}).ok);
    world.program(3).isOver = true;
    world.end(0, 3);
    world.startShell();
    EXPECT_TRUE(world.call({.call = SessionCall::ticket, .session = "bash"}).ok)
        << "the name is free again, and means the session that runs";
    EXPECT_EQ(world.call({.call = SessionCall::ticket, .session = "bash-3"}).reason, "unknown");
}

TEST_F(SessionHostTest, LimitsTheNumberOfSessions) {
    for (std::size_t i = 0; i < SessionHost::maxSessions; ++i)
        EXPECT_NE(world.startShell(), "");
    EXPECT_EQ(world.call(SessionWorld::startCall()).reason, "limit");
    for (std::uint64_t i = 1; i <= 3 * SessionHost::maxEnded; ++i) {
        world.program(i).isOver = true;
        world.end(0, i);
        EXPECT_NE(world.startShell(), "");
    }
    const std::size_t listed = world.call({.call = SessionCall::list}).sessions->size();
    EXPECT_GE(listed, SessionHost::maxSessions + SessionHost::maxEnded) << "the youngest are kept";
    EXPECT_LE(listed, SessionHost::maxSessions + SessionHost::maxEnded + 1);
}

TEST_F(SessionHostTest, AcceptsATicketOnceWithinHalfAMinute) {
    const std::string id = world.startShell();
    const auto ticket = world.ticketFor(id).value();
    EXPECT_EQ(ticket.endpoint, "/private/attach.sock");
    EXPECT_EQ(ticket.session, id);
    const auto greet = [&](const std::string& token) {
        const PeerId peer = world.connect(Door::attach);
        world.receive(peer, PtyAttach::hello(token, 80, 24).value());
        return world.peers[peer]->received.substr(PtyAttach::headerBytes);
    };
    EXPECT_EQ(greet(std::string(43, 'A')), R"({"code":"bad-token","t":"error"})");
    EXPECT_THAT(greet(ticket.token), testing::StartsWith(R"({"labels":{"detached":"Detached.)"));
    EXPECT_EQ(greet(ticket.token), R"({"code":"bad-token","t":"error"})");
    EXPECT_THAT(world.files, IsEmpty()) << "the file goes with the token";

    const auto late = world.ticketFor(id).value();
    world.pass(SessionHost::ticketLife);
    EXPECT_THAT(world.files, IsEmpty());
    EXPECT_EQ(greet(late.token), R"({"code":"bad-token","t":"error"})");
    const auto unnoticed = world.ticketFor(id).value();
    world.now += SessionHost::ticketLife; // as when the machine has slept
    EXPECT_EQ(greet(unnoticed.token), R"({"code":"bad-token","t":"error"})");
    const auto orphan = world.ticketFor(id).value();
    world.program().isOver = true;
    world.end(0);
    EXPECT_EQ(greet(orphan.token), R"({"code":"ended","t":"error"})");
    EXPECT_EQ(world.call({.call = SessionCall::ticket, .session = id}).reason, "ended");
    const std::string other = world.startShell();
    world.diskIsFull = true;
    EXPECT_EQ(world.call({.call = SessionCall::ticket, .session = other}).reason, "system");
    world.diskIsFull = false;
    for (std::size_t i = 0; i < SessionHost::maxTickets; ++i)
        EXPECT_TRUE(world.ticketFor(other));
    EXPECT_EQ(world.call({.call = SessionCall::ticket, .session = other}).reason, "limit");
}

TEST_F(SessionHostTest, ClosesAPeerWithoutAValidGreeting) {
    world.startShell();
    for (const std::string_view garbage :
         {std::string_view("\x06\0\0\0\x02{}", 7), std::string_view("\x01\0\0\0\x01x", 6),
          std::string_view("\xFF\0\0\0\0", 5), std::string_view("\x06\xFF\0\0\0", 5)}) {
        const PeerId peer = world.connect(Door::attach);
        world.receive(peer, garbage);
        EXPECT_TRUE(world.peers[peer]->isClosed);
        EXPECT_TRUE(world.peers[peer]->received.ends_with(R"({"code":"bad-hello","t":"error"})"));
    }
    for (const std::string_view garbage : {"{}\n", "start\n", "{\"call\":\"dance\"}\n", "\n"}) {
        const PeerId peer = world.connect(Door::control);
        world.receive(peer, garbage);
        EXPECT_EQ(world.peers[peer]->received, "{\"ok\":false,\"reason\":\"call\"}\n");
        EXPECT_TRUE(world.peers[peer]->isClosed);
    }
    const PeerId newer = world.connect(Door::attach);
    tell(newer,
         R"({"cols":80,"rows":24,"t":"hello","token":")" + std::string(43, 'A') + R"(","v":2})");
    EXPECT_TRUE(world.peers[newer]->received.ends_with(R"({"code":"bad-hello","t":"error"})"));
    const PeerId endless = world.connect(Door::control);
    world.receive(endless, std::string(maxSessionLine, ' '));
    EXPECT_TRUE(world.peers[endless]->isClosed);

    std::vector<PeerId> silent;
    for (std::size_t i = 0; i <= SessionHost::maxStrangers; ++i)
        silent.push_back(world.connect(i % 2 == 0 ? Door::attach : Door::control));
    EXPECT_TRUE(world.peers[silent.back()]->isClosed) << "one too many";
    EXPECT_FALSE(world.peers[silent.front()]->isClosed);
    world.pass(SessionHost::strangerPatience);
    EXPECT_TRUE(world.peers[silent.front()]->isClosed);
    EXPECT_TRUE(world.call({.call = SessionCall::list}).ok);

    const PeerId caller = world.connect(Door::control);
    for (int i = 0; i < 3; ++i) {
        world.receive(caller, "{\"call\":\"list\"}\n");
        world.pass(SessionHost::strangerPatience - 1);
        EXPECT_FALSE(world.peers[caller]->isClosed) << "each call counts";
    }
    const PeerId slow = world.connect(Door::control);
    world.peers[slow]->room = 5;
    world.receive(slow, "{\"call\":\"list\"}\n{\"call\":\"list\"}\n");
    world.peers[slow]->room = SIZE_MAX;
    world.settle();
    EXPECT_EQ(std::ranges::count(world.peers[slow]->received, '\n'), 2);
}

TEST_F(SessionHostTest, WhatStandsBehindAGreetingIsTheViewersWhereverItIsCut) {
    const std::string id = world.startShell();
    Bytes behind = PtyAttach::resize(70, 20);
    for (const Bytes& frame : {PtyAttach::data(bytesOf("ls\r")), PtyAttach::resize(60, 10)})
        behind.insert(behind.end(), frame.begin(), frame.end());
    const std::size_t greeting =
        PtyAttach::hello(world.ticketFor(id).value().token, 80, 24).value().size();
    for (std::size_t cut = 1; cut <= greeting + behind.size(); ++cut) {
        world.program().typed.clear();
        Bytes sent = PtyAttach::hello(world.ticketFor(id).value().token, 80, 24).value();
        sent.insert(sent.end(), behind.begin(), behind.end());
        const PeerId peer = world.connect(Door::attach);
        world.receive(peer, ByteView(sent).first(cut));
        world.receive(peer, ByteView(sent).subspan(cut));
        EXPECT_THAT(seen(peer).messages, ElementsAre("ready")) << cut;
        EXPECT_EQ(world.program().typed, "ls\r") << cut;
        EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{60, 10})) << cut;
        world.receive(peer, ByteView(PtyAttach::detachFrame));
    }
    const PeerId wild = world.connect(Door::attach);
    Bytes sent = PtyAttach::hello(world.ticketFor(id).value().token, 80, 24).value();
    sent.push_back(0xFF);
    sent.resize(sent.size() + PtyAttach::headerBytes);
    world.receive(wild, ByteView(sent));
    EXPECT_TRUE(world.peers[wild]->isClosed);
    EXPECT_EQ(world.call({.call = SessionCall::list}).sessions.value().front().viewers, 0);
}

TEST_F(SessionHostTest, AViewerSeesTypesResizesAndDetaches) {
    const std::string id = world.startShell();
    write("before\r\n");
    const PeerId peer = attach(id, 100, 30, 0);
    EXPECT_THAT(world.program().sizes, ElementsAre(PtyFrame::Size{100, 30}, PtyFrame::Size{100, 29},
                                                   PtyFrame::Size{100, 30}))
        << "changed, and changed twice for programs that fill the screen";
    write("after \033[6n"); // before it was shown the earlier output
    world.peers[peer]->room = SIZE_MAX;
    world.settle();
    type(peer, "ls\r");
    tell(peer, R"({"t":"of a newer client"})");
    tell(peer, R"({"t":"resize","cols":4294967376,"rows":24})");
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{1000, 24}));
    world.receive(peer, PtyAttach::resize(20, 10));
    EXPECT_EQ(world.program().typed, "ls\r");
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{20, 10}));
    EXPECT_EQ(seen(peer).output, scrolledAway(30) + "before\r\n" + endOfRegion + "after \033[6n");
    EXPECT_THAT(seen(peer).messages, ElementsAre("ready"));
    auto entry = world.call({.call = SessionCall::list}).sessions->front();
    EXPECT_EQ(entry.viewers, 1);
    EXPECT_EQ(entry.attachedSince, world.now + 1e9);
    world.pass(5);
    world.receive(peer, ByteView(PtyAttach::detachFrame));
    EXPECT_TRUE(world.peers[peer]->isClosed);
    entry = world.call({.call = SessionCall::list}).sessions->front();
    EXPECT_EQ(entry.detachedSince, world.now + 1e9);
    EXPECT_EQ(entry.bytesOut, 18U);
    EXPECT_FALSE(entry.exitCode);
}

TEST_F(SessionHostTest, AStreamCarriesFramesBothWays) {
    const std::string id = world.startShell();
    write("before");
    const PeerId peer = world.connect(Door::control);
    world.receive(peer, R"({"call":"stream","session":")" + id + "\"}\n"
                            + std::string(textOf(PtyFrame::resize(70, 1).value())));
    const auto frames = [&] {
        const std::string& all = world.peers[peer]->received;
        const std::size_t end = all.find('\n') + 1;
        EXPECT_EQ(all.substr(0, end), "{\"ok\":true}\n");
        return PtyFrame::Decoder().feed(bytesOf(std::string_view(all).substr(end))).value();
    };
    world.program().sizes.clear();
    world.receive(peer, PtyFrame::resize(70, 1).value());
    EXPECT_THAT(world.program().sizes, ElementsAre(PtyFrame::Size{70, 2}, PtyFrame::Size{70, 1}))
        << "what was sent along with the call counts";
    world.receive(peer, PtyFrame::resize(70, 20).value());
    world.receive(peer, PtyFrame::data(bytesOf("x")));
    const Bytes interrupt{2};
    world.receive(peer, PtyFrame::encode(PtyFrame::Kind::signal, interrupt).value());
    EXPECT_EQ(world.program().typed, "x");
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{70, 20}));
    EXPECT_THAT(world.program().signals, ElementsAre(2));
    world.program().isOver = true;
    world.end(7 << 8);
    world.settle();
    ASSERT_EQ(frames().size(), 4U);
    EXPECT_EQ(frames()[0].kind, PtyFrame::Kind::ready);
    EXPECT_EQ(textOf(frames()[1].payload), "before");
    EXPECT_EQ(textOf(frames()[2].payload), endOfRegion) << "the stream has told no size yet";
    EXPECT_EQ(frames()[3].payload, (Bytes{0, 0, 0, 7}));
    EXPECT_TRUE(world.peers[peer]->isClosed);
}

TEST_F(SessionHostTest, TheViewerThatTypedLastSetsSizeAndAnswersQueries) {
    const std::string id = world.startShell();
    const PeerId first = attach(id, 100, 30);
    const PeerId second = attach(id, 50, 20);
    write("a\033[c");
    type(first, "k");
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{100, 30}));
    write("b\033[c\xE2"); // the switch waits for the end of what is cut, more than once too
    write("\x82");
    type(second, "k");
    write("\xAC\033[c");
    world.host.connectionLost(second);
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{100, 30}));
    write("\033[c");
    EXPECT_EQ(seen(first).output, "ab\033[c\xE2\x82\xAC\033[c");
    EXPECT_EQ(seen(second).output, "a\033[cb\xE2\x82\xAC\033[c");
    const PeerId bridge = stream(id);
    world.receive(bridge, PtyFrame::data(bytesOf("k")));
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{100, 30})) << "it has told no size";
    world.program().sizes.clear();
    world.receive(first, PtyAttach::resize(100, 30));
    EXPECT_THAT(world.program().sizes,
                ElementsAre(PtyFrame::Size{100, 29}, PtyFrame::Size{100, 30}))
        << "the same size once more asks the program to draw anew";
}

TEST_F(SessionHostTest, AReplayOverwritesNothingAndEndsWithItsOwnRegionOnlyAtItsOwnSize) {
    const std::string id = world.startShell();
    const PeerId atStart = attach(id);
    write("one\033[2;9r");
    EXPECT_EQ(seen(atStart).output, "one\033[2;9r");
    EXPECT_EQ(seen(attach(id)).output, scrolledAway(24) + "one\033[2;9r");
    EXPECT_EQ(seen(attach(id, 80, 9)).output, scrolledAway(9) + "one\033[2;9r" + endOfRegion);
    EXPECT_EQ(seen(attach(id, 70, 9)).output, scrolledAway(9) + "one\033[2;9r" + endOfRegion);

    world.startShell();
    world.program(2).output = "first";
    world.settle();
    EXPECT_EQ(seen(attach("bash-2")).output, "first") << "as if it had been started here";
}

TEST_F(SessionHostTest, OneTerminalReportsTheFocusAndItsFirstReportIsDropped) {
    const std::string id = world.startShell();
    const PeerId first = attach(id);
    write("a\033[?1004hb");
    type(first, "\033[I");
    EXPECT_EQ(world.program().typed, "\033[I") << "the program has asked for this one";
    world.program().typed.clear();
    const PeerId second = attach(id);
    EXPECT_TRUE(seen(second).output.ends_with("ab\033[?1004h"));
    type(second, "k\033[Il");
    type(second, "\033[O\033[I");
    EXPECT_EQ(world.program().typed, "kl\033[O\033[I");
    write("c\033[?1004lc");
    EXPECT_TRUE(seen(first).output.ends_with("bcc\033[?1004l"));
    EXPECT_TRUE(seen(second).output.ends_with("\033[?1004hc\033[?1004lc"));
    write("\033[?1004h");
    EXPECT_TRUE(seen(first).output.ends_with("\033[?1004l")) << "not while another answers";
    type(first, "k");
    write("d");
    EXPECT_TRUE(seen(first).output.ends_with("\033[?1004l\033[?1004hd"));
    world.program().typed.clear();
    type(first, "\033[O");
    EXPECT_EQ(world.program().typed, "");
    type(first, "\033[I");
    EXPECT_EQ(world.program().typed, "\033[I");
}

TEST_F(SessionHostTest, AViewerThatMayOnlyLookChangesNothing) {
    const std::string id = world.startShell();
    const PeerId window = attachToView(id, 20, 10);
    const PeerId bridge = world.connect(Door::control);
    world.receive(bridge, R"({"call":"stream","session":")" + id + "\",\"viewOnly\":true}\n");
    type(window, "no");
    world.receive(window, PtyAttach::resize(30, 10));
    world.receive(bridge, PtyFrame::resize(40, 10).value());
    world.receive(bridge, PtyFrame::data(bytesOf("no")));
    const Bytes interrupt{2};
    world.receive(bridge, PtyFrame::encode(PtyFrame::Kind::signal, interrupt).value());
    EXPECT_EQ(world.program().typed, "");
    EXPECT_THAT(world.program().signals, IsEmpty());
    EXPECT_THAT(world.program().sizes, IsEmpty());
    write("a\033[c");
    EXPECT_EQ(seen(window).output, "a") << "none of them answers";
    const PeerId typist = attach(id, 100, 30);
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{100, 30}));
    world.program().sizes.clear();
    world.receive(window, PtyAttach::resize(50, 10));
    EXPECT_THAT(world.program().sizes, IsEmpty());
    world.receive(window, PtyAttach::resize(50, 10));
    EXPECT_THAT(world.program().sizes,
                ElementsAre(PtyFrame::Size{100, 29}, PtyFrame::Size{100, 30}))
        << "the same size once more asks the program to draw anew";
    attachToView(id, 10, 10);
    write("b\033[c");
    EXPECT_EQ(seen(typist).output, scrolledAway(30) + "a" + endOfRegion + "b\033[c");
    EXPECT_EQ(seen(window).output, "ab");
    EXPECT_EQ(world.call({.call = SessionCall::list}).sessions->front().viewers, 4);
    world.receive(window, ByteView(PtyAttach::detachFrame));
    EXPECT_TRUE(world.peers[window]->isClosed);
    world.host.connectionLost(typist);
    EXPECT_EQ(world.program().sizes.back(), (PtyFrame::Size{100, 30}));
}

TEST_F(SessionHostTest, TellsWhatAsksForAPersonUntilOneLooks) {
    const std::string id = world.startShell();
    const auto entry = [&] { return world.call({.call = SessionCall::list}).sessions->front(); };
    EXPECT_EQ(entry().idleSince, world.now + 1e9);
    EXPECT_FALSE(entry().attentionSince);
    world.pass(5);
    write("\033]9;tests pas");
    world.pass(5);
    write("sed\a");
    const double rung = world.now + 1e9;
    world.pass(5);
    EXPECT_EQ(entry().attentionSince, rung);
    EXPECT_EQ(entry().notice, "tests passed");
    EXPECT_EQ(entry().idleSince, rung);
    write("more");
    EXPECT_EQ(entry().attentionSince, rung);
    EXPECT_EQ(entry().idleSince, world.now + 1e9);
    const double wrote = world.now + 1e9;
    world.pass(5);
    world.host.programReady(SessionNumber{1});
    EXPECT_EQ(entry().idleSince, wrote);
    write("\a");
    EXPECT_EQ(entry().attentionSince, world.now + 1e9);
    EXPECT_EQ(entry().notice, "tests passed") << "a bell does not hide it";

    const PeerId peer = attach(id);
    const PeerId viewer = attachToView(id, 80, 24);
    EXPECT_FALSE(entry().attentionSince);
    EXPECT_FALSE(entry().notice);
    const std::vector<std::function<void()>> looks = {
        [&] { type(peer, "x"); },
        [&] { world.receive(peer, PtyAttach::resize(9, 9)); },
        [&] { attachToView(id, 80, 24); },
        [&] { world.receive(peer, ByteView(PtyAttach::detachFrame)); },
        [&] { world.receive(viewer, ByteView(PtyAttach::detachFrame)); },
    };
    for (std::size_t i = 0; i < looks.size(); ++i) {
        write("\a");
        EXPECT_EQ(entry().attentionSince, world.now + 1e9) << i;
        EXPECT_FALSE(entry().notice) << i;
        if (i == 1) {
            type(viewer, "x");
            EXPECT_TRUE(entry().attentionSince) << "which may not type";
        }
        looks[i]();
        EXPECT_FALSE(entry().attentionSince) << i;
    }
    const PeerId lost = attach(id);
    write("\a");
    world.host.connectionLost(lost);
    EXPECT_TRUE(entry().attentionSince) << "a lost connection does not look";
}

TEST_F(SessionHostTest, TypesWhatIsSentInOrderWithTheKeysOfViewers) {
    const std::string id = world.startShell();
    const auto send = [&](const std::string& keys) {
        return world.call({.call = SessionCall::send, .session = id, .keys = keys});
    };
    const PeerId peer = attach(id);
    world.program().appetite = 2;
    type(peer, "abc");
    EXPECT_TRUE(send("XYZ").ok);
    EXPECT_EQ(send("no").reason, "limit");
    world.program().appetite = 2;
    world.settle();
    EXPECT_EQ(world.program().typed, "abcX") << "the keys of a frame stay together";
    type(peer, "d");
    world.program().appetite = SIZE_MAX;
    world.settle();
    EXPECT_EQ(world.program().typed, "abcXYZd");
    world.program().mostTaken = 1;
    EXPECT_TRUE(send("sent at once").ok);
    type(peer, "k");
    world.settle();
    EXPECT_EQ(world.program().typed, "abcXYZdsent at oncek");
    world.program().mostTaken = SIZE_MAX;
    EXPECT_TRUE(send("").ok);
    EXPECT_EQ(send(std::string(SessionHost::maxSent + 1, 'x')).reason, "call");
    EXPECT_TRUE(send(std::string(SessionHost::maxSent, 'x')).ok);
    EXPECT_EQ(world.call({.call = SessionCall::send, .session = id}).reason, "call");
    world.program().appetite = 0;
    EXPECT_TRUE(send("never read").ok);
    world.program().isOver = true;
    world.end(0);
    EXPECT_EQ(send("x").reason, "ended");
    world.pass(2 * TerminalSession::memory);
    EXPECT_TRUE(world.host.isIdle());
}

TEST_F(SessionHostTest, AWaitIsAnsweredWhenTheSessionEnds) {
    const std::string id = world.startShell();
    const auto wait = [&](const std::string& session) {
        const PeerId peer = world.connect(Door::control);
        world.receive(peer, R"({"call":"wait","session":")" + session + "\"}\n");
        return peer;
    };
    const PeerId waiter = wait("bash");
    const PeerId talker = wait(id);
    const PeerId lost = wait(id);
    const PeerId silent = world.connect(Door::control);
    world.pass(10 * SessionHost::strangerPatience);
    EXPECT_TRUE(world.peers[silent]->isClosed);
    for (const PeerId peer : {waiter, talker, lost})
        EXPECT_FALSE(world.peers[peer]->isClosed || !world.peers[peer]->received.empty());
    world.host.connectionLost(lost);
    world.receive(talker, "{\"call\":\"list\"}\n");
    EXPECT_TRUE(world.peers[talker]->isClosed);
    world.end(7 << 8);
    EXPECT_EQ(world.peers[waiter]->received, "") << "output may follow";
    world.program().isOver = true;
    world.settle();
    for (const PeerId peer : {waiter, wait(id)}) {
        EXPECT_EQ(world.peers[peer]->received, "{\"exitCode\":7,\"ok\":true}\n");
        EXPECT_TRUE(world.peers[peer]->isClosed);
    }
    EXPECT_TRUE(world.peers[wait("other")]->received.contains("unknown"));
    EXPECT_EQ(world.call({.call = SessionCall::wait}).reason, "call");
}

TEST_F(SessionHostTest, DetachesEveryViewerOfASession) {
    const std::string id = world.startShell();
    const PeerId window = attach(id);
    const PeerId stuck = attach(id, 80, 24, 0);
    const PeerId bridge = stream(id);
    EXPECT_TRUE(world.call({.call = SessionCall::detach, .session = id}).ok);
    EXPECT_TRUE(world.peers[window]->received.ends_with(R"({"code":"detached","t":"error"})"));
    for (const PeerId peer : {window, stuck, bridge})
        EXPECT_TRUE(world.peers[peer]->isClosed);
    EXPECT_EQ(world.call({.call = SessionCall::list}).sessions->front().viewers, 0);
    EXPECT_EQ(world.call({.call = SessionCall::detach, .session = "x"}).reason, "unknown");
}

TEST_F(SessionHostTest, ARepeatIsCutToTheLastLines) {
    const std::string id = world.startShell();
    write("\033[1mone\r\ntwo\r\n\033]2;a\nb\athree\r\n> ");

    const struct {
        std::int64_t lines;
        std::string_view shown;
    } cases[] = {
        {0, "> "},
        {1, "> "},
        {3, "three\r\n> "},
        {4, "two\r\n"},
        {5, "\033[1mone\r\n"},
        {1000000, "\033[1mone\r\n"},
        {-1, "> "},
    };

    for (const auto& [lines, shown] : cases) {
        const PeerId peer = world.connect(Door::control);
        world.receive(peer, R"({"call":"stream","session":")" + id
                                + "\",\"lines\":" + std::to_string(lines) + "}\n");
        const std::string& all = world.peers[peer]->received;
        std::string output;
        const auto frames =
            PtyFrame::Decoder().feed(bytesOf(std::string_view(all).substr(all.find('\n') + 1)));
        for (const auto& frame : frames.value()) {
            if (frame.kind == PtyFrame::Kind::data)
                output += textOf(frame.payload);
        }
        EXPECT_TRUE(output.contains(shown)) << lines << testing::PrintToString(output);
        EXPECT_EQ(output.contains("two"), shown.contains("o")) << lines;
        EXPECT_TRUE(output.ends_with("> " + endOfRegion)) << lines;
        EXPECT_TRUE(output.contains("1m")) << lines;
        world.host.connectionLost(peer);
    }
}

TEST_F(SessionHostTest, TheSshAgentIsThatOfTheViewerWhoMayTypeAndCameLast) {
    SessionCallLine call = SessionWorld::startCall();
    call.environment = {"SSH_AUTH_SOCK=/tmp/first"};
    const std::string id = world.call(call).session.value();
    const std::string link = "ssh-" + id;
    EXPECT_EQ(world.lastEnvironment.at("SSH_AUTH_SOCK"), "/private/" + link);
    const auto attachWith = [&](const std::string& agent, bool isViewOnly) {
        const auto reply = world.call(
            {.call = SessionCall::ticket, .session = id, .viewOnly = isViewOnly, .agent = agent});
        const std::string file = reply.ticket.value().substr(world.folder().size() + 1);
        const std::string token = PtyAttach::parseTicket(world.files.at(file)).value().token;
        world.receive(world.connect(Door::attach), PtyAttach::hello(token, 80, 24).value());
    };

    const struct {
        std::string agent;
        bool isViewOnly;
        std::string target;
    } cases[] = {
        {"/tmp/second", false, "/tmp/second"}, {"/tmp/third", true, "/tmp/second"},
        {"relative", false, "/tmp/second"},    {"/private/" + link, false, "/tmp/second"},
        {"/tmp/fourth", false, "/tmp/fourth"},
    };

    for (const auto& [agent, isViewOnly, target] : cases) {
        attachWith(agent, isViewOnly);
        EXPECT_EQ(world.files.at(link), target) << agent;
    }
    const PeerId bridge = world.connect(Door::control);
    world.receive(bridge, R"({"agent":"/tmp/fifth","call":"stream","session":")" + id + "\"}\n");
    EXPECT_EQ(world.files.at(link), "/tmp/fifth");
    world.files.erase(link);
    world.host.renewAgentLinks();
    EXPECT_EQ(world.files.at(link), "/tmp/fifth");
    world.program().isOver = true;
    world.end(0);
    EXPECT_FALSE(world.files.contains(link));

    for (const char* given : {"LANG=C", "SSH_AUTH_SOCK=relative"}) {
        call.environment = {given};
        const auto without = world.call(call).session.value();
        EXPECT_FALSE(world.files.contains("ssh-" + without)) << given;
    }
    world.startFails = true;
    call.environment = {"SSH_AUTH_SOCK=/tmp/first"};
    EXPECT_EQ(world.call(call).reason, "system");
    EXPECT_THAT(world.files, IsEmpty());
}

TEST_F(SessionHostTest, WritesATranscriptWithinItsBoundsUntilTheSessionEnds) {
    SessionCallLine call = SessionWorld::startCall();
    for (const std::string path : {"relative", "/a/../b", "/folder/", "", "/missing/file"}) {
        call.transcript = path;
        EXPECT_EQ(world.call(call).reason, "transcript") << path;
    }
    EXPECT_THAT(world.programs, IsEmpty());
    call.transcript = "/shown";
    world.transcripts.files["/shown"].content = "of an earlier session\r\n";
    EXPECT_TRUE(world.call(call).ok);
    const FakeTranscripts::File& file = world.transcripts.files["/shown"];
    EXPECT_EQ(world.call(call).reason, "busy");
    write("\033[31mred\a");
    EXPECT_EQ(file.content, "of an earlier session\r\n\033[31mred\a");
    std::string all = file.content;
    for (char letter = 'a'; letter < 'z'; ++letter) {
        all += std::string(mebibyte, letter);
        write(std::string(mebibyte, letter));
        ASSERT_LE(file.content.size(), Transcript::maxFile);
        ASSERT_TRUE(all.ends_with(file.older + file.content));
        ASSERT_TRUE(file.older.empty() || file.older.size() > Transcript::maxFile - mebibyte);
    }
    EXPECT_FALSE(file.older.empty());
    world.program().isOver = true;
    world.end(0);
    EXPECT_FALSE(file.isOpen) << "another session may continue it";
    EXPECT_THAT(world.logged, testing::Not(testing::Contains(testing::HasSubstr("transcript"))));
}

TEST_F(SessionHostTest, ASessionGoesOnWithoutATranscriptThatCannotBeWritten) {
    for (const bool isFull : {true, false}) {
        SCOPED_TRACE(isFull ? "a full disk" : "a file that keeps its name");
        SessionWorld other;
        SessionCallLine call = SessionWorld::startCall();
        call.transcript = "/shown";
        EXPECT_TRUE(other.call(call).ok);
        other.transcripts.diskIsFull = isFull;
        other.transcripts.turns = false;
        for (int i = 0; i < 3; ++i) {
            other.program().output = std::string(4 * mebibyte, '.');
            other.settle();
        }
        other.transcripts.diskIsFull = false;
        other.program().output = "more";
        other.settle();
        EXPECT_EQ(other.program().output, "") << "is read all the same";
        EXPECT_EQ(other.transcripts.files["/shown"].content.size(),
                  isFull ? 0 : Transcript::maxFile);
        EXPECT_FALSE(other.transcripts.files["/shown"].isOpen);
        EXPECT_EQ(std::ranges::count_if(other.logged,
                                        [](const std::string& line) {
                                            return line.contains("goes on without its transcript");
                                        }),
                  1);
    }
}

TEST_F(SessionHostTest, BeginsAReplayAtALineWithEarlierModes) {
    const std::string id = world.startShell();
    write("\033[?1049h\033[?25l\033[1m\033]2;old\a first line \033[6n\r\n");
    std::string lines;
    for (int i = 0; lines.size() < mebibyte + mebibyte / 8; ++i)
        lines += "line " + std::to_string(i) + "\033[5n\r\n";
    world.program().output = lines;
    world.host.programReady(SessionNumber{1});
    EXPECT_FALSE(world.program().output.empty()) << "others have their turn";
    world.settle();
    write("\033]52;c;?\a> ");
    const Seen shown = seen(attach(id));
    EXPECT_TRUE(shown.output.starts_with(scrolledAway(24)));
    for (const char* const set : {"\033[?1049h", "\033[?25l", "\033]2;old\a", "\033[0;1mline "})
        EXPECT_TRUE(shown.output.contains(set)) << set;
    EXPECT_TRUE(shown.output.ends_with("\r\n> "));
    EXPECT_FALSE(shown.output.contains("\033[5n")) << "it was answered when it was new";
    EXPECT_FALSE(shown.output.contains("first line"));
    EXPECT_GT(shown.output.size(), mebibyte / 2);
    EXPECT_TRUE(shown.isWhole);
}

TEST_F(SessionHostTest, BeginsAReplayAfterAHiddenSequence) {
    const std::string id = world.startShell();
    std::string picture = "\033Pq";
    while (picture.size() < mebibyte / 4)
        picture += "#0~~\r\n";
    write(picture);
    std::string lines = "\033\\";
    while (lines.size() < mebibyte - mebibyte / 8)
        lines += "line\r\n";
    write(lines); // what is kept begins within the picture
    const Seen shown = seen(attach(id));
    EXPECT_TRUE(shown.output.starts_with(scrolledAway(24)));
    EXPECT_TRUE(shown.output.substr(0, 100).contains("mline\r\n")) << shown.output.substr(0, 100);
    EXPECT_FALSE(shown.output.contains('#'));
    EXPECT_GT(shown.output.size(), mebibyte / 2);
}

TEST_F(SessionHostTest, AReplayShowsTheScreenWhateverCameBefore) {
    constexpr PtyFrame::Size size{.cols = 80, .rows = 24};
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"prompt\r\n\033[?1049h\033[H\033[44mtitle\033[m\033[24Hstatus\033[2;23r\033[2H",
         "line\r\n"},
        {"in the middle\033[H", "\033[5;5Hframe\033[K"},
        {"above\033[31m\r\n", "99% of it, and without any line feed\r"},
        {"above\r\n\n\n\n", "\033[2A\r\na block\r\n"},
    };
    std::uint64_t number = 0;
    for (const auto& [before, filler] : cases) {
        std::string all(before);
        while (all.size() < mebibyte + mebibyte / 8)
            all += filler;
        const std::string id = world.startShell();
        world.program(++number).output = all;
        world.settle();
        Screen direct(size);
        Screen again(size);
        direct.follow(bytesOf(all));
        again.follow(bytesOf(seen(attach(id)).output));
        EXPECT_EQ(again.text(), direct.text()) << before << filler;
        EXPECT_EQ(again.drawn(size), direct.drawn(size)) << before << filler;
    }
}

TEST_F(SessionHostTest, AProgramIsAskedToDrawOnlyWhatAReplayDoesNotShow) {
    constexpr PtyFrame::Size larger{.cols = 100, .rows = 30};
    const std::string noise(2 * mebibyte, '\0');

    std::string lines;
    for (int i = 0; i < 300; ++i)
        lines += "line " + std::to_string(i) + "\r\n";
    const std::string block = std::string(80, '.') + std::string(80, '-') + "\033[2A\r";

    /// What is shown at 80 columns by 24 rows, and then in a larger window.
    const std::pair<std::string, std::string> cases[] = {
        {"", "plain\033[2;3r"},
        {"plain", ""},
        {"plain" + noise, noise},
        {lines, "next"},
        {"", lines},
        {lines + noise, "next"},
        {lines + "\033[1;23r\033[24Hbar\033[5H", "\033[6n\n\nnext"},
        {lines + block, block + "\033[3"},
        {block + noise, "\033[2Bnext"},
        {"main\033[?1049h\033[2;23r\033[99Hbottom\033[?6h\033[?25l", "\033[Htop"},
        {"\033[20;4h\033[?7l\033[?47h\033[99Hbottom", "\033[4;20l\033[?7h\033[Ha\n"},
        {"main\033[?47h\033[99Hbottom\033[3", "1mred\033[99Hlast"},
        {"main\033[?1049h\033[99Hbottom", "\033[?1049lon\033[99Hlast"},
        {block + "main\033[?1049h", "\033[?1049l\r\nnext"},
        {"\033[?1049h" + noise + "\033[99Hbottom", "\033[Htop"},
    };

    std::uint64_t number = 0;
    for (const auto& [before, after] : cases) {
        const std::string id = world.startShell();
        FakeProgram& program = world.program(++number);
        program.output = before;
        world.settle();
        attach(id, larger.cols, larger.rows);
        program.output = after;
        world.settle();
        program.sizes.clear();
        Screen shown(larger);
        const std::string replay = seen(attach(id, larger.cols, larger.rows)).output;
        shown.follow(bytesOf(replay));
        EXPECT_FALSE(before == lines && replay.contains("\033[1J")) << "shown as it is to be";
        const auto expected = world.call({.call = SessionCall::peek, .session = id}).screen.value();
        EXPECT_TRUE(program.sizes.empty()) << before.substr(0, 40);
        EXPECT_EQ(shown.text(), expected.lines) << before.substr(0, 40);
        EXPECT_EQ(shown.cursor(), (Screen::Place{expected.cursorRow, expected.cursorColumn}));
        attach(id, 80, 24);
        EXPECT_FALSE(program.sizes.empty()) << "another size";
        program.sizes.clear();
        const auto reply = world.call({.call = SessionCall::ticket, .session = id, .lines = 1});
        const auto file = reply.ticket.value().substr(world.folder().size() + 1);
        const auto token = PtyAttach::parseTicket(world.files.at(file))->token;
        world.receive(world.connect(Door::attach), PtyAttach::hello(token, 80, 24).value());
        EXPECT_EQ(program.sizes.empty(), expected.alternate) << "a few lines are not all";
    }
    const std::string id = world.startShell();
    FakeProgram& program = world.program(++number);
    attach(id, 300, 100);
    program.output = std::string(std::size_t{300} * 100, '.');
    world.settle();
    attach(id, 299, 100);
    program.sizes.clear();
    attach(id, 299, 100);
    EXPECT_FALSE(program.sizes.empty()) << "the host has no room for so much text";
}

TEST_F(SessionHostTest, ARepeatOfFewLinesStillShowsTheAlternateScreen) {
    const std::string id = world.startShell();
    write("\033[?1049h\033[5;5Hbelow\033[H" + std::string(40, '\n') + "a\r\nlast\r\n");
    const auto reply = world.call({.call = SessionCall::ticket, .session = id, .lines = 2});
    const PeerId peer = world.connect(Door::attach);
    const auto file = reply.ticket.value().substr(world.folder().size() + 1);
    world.receive(
        peer,
        PtyAttach::hello(PtyAttach::parseTicket(world.files.at(file))->token, 80, 24).value());
    Screen screen({.cols = 80, .rows = 24});
    screen.follow(bytesOf(seen(peer).output));
    EXPECT_TRUE(screen.isAlternate());
    EXPECT_EQ(screen.text().at(21), "a");
    EXPECT_EQ(screen.text().at(22), "last");
}

TEST_F(SessionHostTest, AnswersWhatAProgramAsksWhileNoViewerMay) {
    const std::string id = world.startShell();
    const auto typedUpon = [&](std::string_view output) {
        world.program().typed.clear();
        write(output);
        return world.program().typed;
    };
    EXPECT_EQ(typedUpon("\033[5nab\r\nc\033[6n"), "\033[0n\033[2;2R");
    EXPECT_EQ(typedUpon("de\033[6"), "");
    EXPECT_EQ(typedUpon("n\033]2;\033[6n\a"), "\033[2;4R\033[2;4R") << "ESC ends the title";
    const PeerId looking = attachToView(id, 20, 10);
    EXPECT_EQ(typedUpon("\033[c\033[>0c\033[?6n\033[0m"),
              "\033[?64;1;2;6;9;15;16;17;18;21;22;28c\033[>41;379;0c");
    const PeerId answering = attach(id, 100, 30);
    EXPECT_EQ(typedUpon("\033[H\033[6n"), "") << "the viewer's terminal does";
    EXPECT_TRUE(seen(answering).output.ends_with("\033[H\033[6n"));
    EXPECT_FALSE(seen(answering).output.contains("\033[5n")) << "the host has answered";
    world.host.connectionLost(answering);
    EXPECT_EQ(typedUpon("x\033[6n"), "\033[1;2R") << "what was asked before is not answered again";
    EXPECT_EQ(typedUpon("\033[999;999H\033[6n"), "\033[30;100R") << "the size is the last one";
    EXPECT_EQ(typedUpon("\033[2;3H" + std::string(3 * mebibyte, '\a') + "\033[6n"), "\033[2;3R");
    world.host.connectionLost(attach(id, 100, 2));
    EXPECT_EQ(typedUpon("\n\n\n\033[6n"), "\033[2;3R");
    world.host.connectionLost(attach(id, 100, 4));
    EXPECT_EQ(typedUpon("\033[6n"), "\033[4;3R") << "the text comes back, and the cursor with it";
    world.host.connectionLost(attach(id, 100, 30));
    EXPECT_FALSE(seen(looking).output.contains("6n"));

    for (const std::string query : {"\033[2;5H\033[6n", "x\033[5n"}) {
        for (std::size_t cut = 0; cut <= query.size(); ++cut) {
            const bool isWhole = cut == query.size();
            const PeerId leaving = attach(id, 100, 30);
            EXPECT_EQ(typedUpon(query.substr(0, cut)), "") << query << cut;
            world.host.connectionLost(leaving);
            EXPECT_EQ(typedUpon(query.substr(cut) + "."), isWhole                ? ""
                                                          : query.contains("6n") ? "\033[2;5R"
                                                                                 : "\033[0n")
                << query << cut;
        }
    }
    const PeerId leavingAtOnce = attach(id, 100, 30, 8);
    world.program().typed.clear();
    world.host.connectionLost(leavingAtOnce);
    world.settle();
    EXPECT_EQ(world.program().typed, "") << "a replay asks nothing";
    const PeerId slow = attach(id, 100, 30);
    world.peers[slow]->room = 8;
    EXPECT_EQ(typedUpon("\033[5n\033[5n"), "");
    world.program().typed.clear();
    world.host.connectionLost(slow);
    world.settle();
    EXPECT_EQ(world.program().typed, "\033[0n\033[0n") << "which were never sent";
    const PeerId first = attach(id, 100, 30);
    world.peers[attach(id, 100, 30)]->room = 0;
    EXPECT_EQ(typedUpon("\033[5n"), "");
    world.peers[first]->room = 0;
    type(first, "k"); // answers from here on
    EXPECT_EQ(typedUpon("\033[5n"), "");
    EXPECT_TRUE(world.call({.call = SessionCall::detach, .session = id}).ok);
    EXPECT_EQ(world.program().typed, "\033[0n\033[0n") << "whoever is dismissed first";

    world.program().appetite = 0;
    for (int i = 0; i < 3000; ++i)
        write("\033[6n");
    world.program().appetite = SIZE_MAX;
    EXPECT_LT(typedUpon("x").size(), std::size_t{9000}) << "bounded, if the program reads nothing";
    EXPECT_EQ(typedUpon("\033[5n"), "\033[0n") << "what was dropped stays so";
}

TEST_F(SessionHostTest, TellsWhatASessionShows) {
    const std::string id = world.startShell();
    const auto peek = [&](std::optional<std::int64_t> lines = {}) {
        return world.call({.call = SessionCall::peek, .session = id, .lines = lines});
    };
    EXPECT_EQ(peek().screen,
              (SessionScreen{.cols = 80, .rows = 24, .cursorColumn = 1, .cursorRow = 1}));
    write("one\r\n\033[31mtwo\033[m  \r\n\r\n> ");
    EXPECT_EQ(peek().screen->lines, (std::vector<std::string>{"one", "two", "", ">"}));
    EXPECT_EQ(peek().screen->cursorRow, 4);
    EXPECT_EQ(peek().screen->cursorColumn, 3);
    EXPECT_EQ(peek(2).screen->lines, (std::vector<std::string>{"", ">"}));
    EXPECT_THAT(peek(0).screen->lines, IsEmpty());
    EXPECT_THAT(peek(-1).screen->lines, IsEmpty());
    attach(id, 30, 10);
    write("\033[?1049h\033[2;2H" + std::string(2 * mebibyte, '\r') + "\nalt");
    EXPECT_EQ(peek().screen, (SessionScreen{.cols = 30,
                                            .rows = 10,
                                            .cursorColumn = 4,
                                            .cursorRow = 3,
                                            .alternate = true,
                                            .lines = {"", "", "alt"}}));
    EXPECT_EQ(world.call({.call = SessionCall::peek, .session = "s_0000000000000000"}).reason,
              "unknown");
}

TEST_F(SessionHostTest, ASlowViewerHoldsUpTheProgramForFiveSeconds) {
    const std::string id = world.startShell();
    const PeerId quick = attach(id);
    const PeerId slow = attach(id); // it leads, and is sent frames that lie in the log
    const std::size_t before = world.peers[slow]->received.size();
    world.peers[slow]->room = 1000; // the middle of a frame
    const std::string screen(70, 'x');
    std::string all;
    for (int i = 0; all.size() < 4 * mebibyte; ++i)
        all += std::to_string(i) + screen + "\033[31m\r\n";
    write(all);
    EXPECT_GT(world.program().output.size(), 3 * mebibyte) << "the program waits";
    world.pass(Viewer::patience - 0.1);
    EXPECT_GT(world.program().output.size(), 3 * mebibyte);
    world.pass(0.2);
    EXPECT_THAT(world.program().output, IsEmpty());
    EXPECT_EQ(seen(quick).output, all);
    EXPECT_EQ(world.peers[slow]->received.size(), before + 1000);

    world.program().sizes.clear();
    world.peers[slow]->room = SIZE_MAX;
    world.settle();
    EXPECT_THAT(world.program().sizes, ElementsAre(PtyFrame::Size{80, 23}, PtyFrame::Size{80, 24}))
        << "a program that fills the screen draws anew";
    const Seen resumed = seen(slow);
    EXPECT_TRUE(resumed.isWhole);
    EXPECT_TRUE(resumed.output.contains("\033[2J\033[H"));
    EXPECT_TRUE(resumed.output.ends_with(all.substr(all.size() - mebibyte / 2)));
    EXPECT_LT(resumed.output.size(), mebibyte + mebibyte / 2);
    write("live");
    EXPECT_TRUE(seen(slow).output.ends_with("live"));
    world.peers[slow]->room = 0;
    write("\033]2;a title that goes on");
    std::string plain = "\033[m"; // ends it
    while (plain.size() < 4 * mebibyte)
        plain += screen + "\r\n";
    write(plain);
    EXPECT_FALSE(world.program().output.empty()) << "it is waited for again";
    world.pass(Viewer::patience);
    world.peers[slow]->room = SIZE_MAX;
    world.settle();
    const std::string output = seen(slow).output;
    const std::string replay = output.substr(output.rfind("\033[2J\033[H"));
    EXPECT_TRUE(replay.ends_with(plain.substr(plain.size() - mebibyte / 2)))
        << "it is no part of the title";
}

TEST_F(SessionHostTest, KeysThatTheProgramDoesNotReadWaitAndStayInOrder) {
    const std::string id = world.startShell();
    const PeerId other = attach(id); // it comes first wherever the viewers are gone through
    const PeerId one = attach(id);
    world.program().appetite = 3;
    type(one, "abcdef");
    type(other, "XYZ");
    EXPECT_FALSE(world.peers[one]->watchesInput);
    EXPECT_FALSE(world.peers[other]->watchesInput);
    EXPECT_TRUE(world.program().watchesInput);
    write("still shown");
    EXPECT_EQ(seen(other).output, "still shown");
    world.program().appetite = SIZE_MAX;
    world.settle();
    EXPECT_EQ(world.program().typed, "abcdefXYZ");
    EXPECT_TRUE(world.peers[one]->watchesInput);
    world.program().appetite = 0;
    Bytes last = PtyAttach::data(bytesOf("bye"));
    last.insert(last.end(), PtyAttach::detachFrame.begin(), PtyAttach::detachFrame.end());
    world.receive(one, last);
    EXPECT_FALSE(world.peers[one]->isClosed) << "until its keys have arrived";
    world.program().appetite = SIZE_MAX;
    world.settle();
    EXPECT_EQ(world.program().typed, "abcdefXYZbye");
    EXPECT_TRUE(world.peers[one]->isClosed);
}

TEST_F(SessionHostTest, ClosesAViewerThatSendsGarbage) {
    const std::string id = world.startShell();
    for (std::size_t i = 0; i <= SessionHost::maxStrangers; ++i)
        world.host.connectionLost(attach(id)); // a viewer is not a stranger
    const PeerId good = attach(id);
    const PeerId window = attach(id);
    const PeerId bridge = stream(id);
    const PeerId dead = attach(id);
    world.peers[dead]->isGone = true;
    const auto ticket = world.ticketFor(id).value();
    world.receive(window, PtyAttach::hello(ticket.token, 1, 1).value());
    world.receive(bridge, PtyFrame::exit(0));
    write("on");
    for (const PeerId peer : {window, bridge, dead})
        EXPECT_TRUE(world.peers[peer]->isClosed);
    EXPECT_EQ(seen(good).output, "on");
    for (std::size_t i = 1; i < TerminalSession::maxViewers; ++i)
        attach(id);
    EXPECT_TRUE(world.peers[attach(id)]->received.contains("limit"));
    EXPECT_TRUE(world.peers[stream(id)]->received.contains("limit"));
}

TEST_F(SessionHostTest, SendsTheExitAfterTheLastOutput) {
    const std::string id = world.startShell();
    const PeerId peer = attach(id);
    world.end(7 << 8); // the news is first
    world.program().output = "last words";
    world.settle();
    EXPECT_THAT(seen(peer).messages, ElementsAre("ready"));
    EXPECT_FALSE(world.call({.call = SessionCall::list}).sessions->front().exitCode);
    world.program().isOver = true;
    world.settle();
    EXPECT_EQ(seen(peer).output, "last words");
    EXPECT_THAT(seen(peer).messages, ElementsAre("ready", "exit"));
    EXPECT_TRUE(world.peers[peer]->isClosed);
    EXPECT_EQ(world.call({.call = SessionCall::list}).sessions->front().exitCode, 7);
    EXPECT_EQ(world.call({.call = SessionCall::end, .session = "bash"}).reason, "ended");
    EXPECT_EQ(world.programs.begin()->second.use_count(), 1) << "its terminal is closed";
    EXPECT_FALSE(world.host.isIdle());
    world.pass(TerminalSession::memory);
    EXPECT_EQ(world.call({.call = SessionCall::ticket, .session = id}).reason, "unknown");
    EXPECT_TRUE(world.host.isIdle());
    EXPECT_FALSE(world.host.deadline()) << "nothing wakes the host";
}

TEST_F(SessionHostTest, EndsADrainAfterItsPatience) {
    const std::string id = world.startShell();
    const PeerId peer = attach(id);
    const PeerId stuck = attach(id);
    world.peers[stuck]->room = 0;
    world.end(9); // killed; something else has the terminal open still
    world.pass(TerminalSession::drainPatience + 0.1);
    EXPECT_THAT(seen(peer).messages, ElementsAre("ready", "exit"));
    EXPECT_FALSE(world.peers[stuck]->isClosed);
    world.pass(TerminalSession::memory);
    EXPECT_TRUE(world.peers[stuck]->isClosed);
    EXPECT_TRUE(world.host.isIdle());
}

TEST_F(SessionHostTest, SendsTheLastOutputDespiteASlowViewer) {
    const std::string id = world.startShell();
    const PeerId peer = attach(id);
    attach(id, 80, 24, 0);
    write(std::string(4 * Viewer::window, 'x') + "last words");
    world.end(9); // something else has the terminal open still
    world.pass(Viewer::patience + 2 * TerminalSession::drainPatience);
    EXPECT_TRUE(seen(peer).output.ends_with("last words"));
    EXPECT_THAT(seen(peer).messages, ElementsAre("ready", "exit"));
}

TEST_F(SessionHostTest, EndHangsUpThenTerminatesThenKills) {
    const std::string id = world.startShell();
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = id}).ok);
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = id}).ok) << "already under way";
    EXPECT_THAT(world.program().endings, ElementsAre(1));
    world.pass(2);
    EXPECT_THAT(world.program().endings, ElementsAre(1, 15));
    world.program().isOver = true;
    world.end(15); // the leader has ended; what it started has not
    world.pass(10);
    EXPECT_THAT(world.program().endings, ElementsAre(1, 15, 9));
    EXPECT_EQ(world.programs.begin()->second.use_count(), 1);
}

TEST_F(SessionHostTest, KillsAProgramThatSurvivesAKillAgain) {
    const std::string id = world.startShell();
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = id}).ok);
    world.pass(10);
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = id}).ok);
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = id}).ok);
    EXPECT_THAT(world.program().endings, ElementsAre(1, 15, 9, 9, 9));
}

TEST_F(SessionHostTest, SignalsNothingAfterTheLastProcessHasEnded) {
    EXPECT_TRUE(world.call({.call = SessionCall::end, .session = world.startShell()}).ok);
    world.program().hasProcesses = false;
    world.program().isOver = true;
    world.end(1);
    EXPECT_EQ(world.programs.begin()->second.use_count(), 1);
    world.pass(10);
    EXPECT_THAT(world.program().endings, ElementsAre(1)) << "the number may be another's by now";
}

TEST_F(SessionHostTest, RefusesAViewerFromWithinTheSession) {
    const std::string id = world.startShell();
    const auto ticket = world.ticketFor(id);
    const PeerId window = world.connect(Door::attach);
    const PeerId bridge = world.connect(Door::control);
    for (const PeerId peer : {window, bridge})
        world.peers[peer]->ancestors = {99, world.program().pid(), 1};
    world.receive(window, PtyAttach::hello(ticket.value().token, 80, 24).value());
    EXPECT_THAT(seen(window).messages, ElementsAre("error"));
    world.receive(bridge, R"({"call":"stream","session":")" + id + "\"}\n");
    EXPECT_EQ(world.peers[bridge]->received, "{\"ok\":false,\"reason\":\"itself\"}\n");
    EXPECT_EQ(world.call({.call = SessionCall::list}).sessions.value().front().viewers, 0);
}

TEST_F(SessionHostTest, RefusesACircleThroughOtherSessions) {
    std::vector<std::string> ids;
    for (int i = 0; i < 4; ++i)
        ids.push_back(world.startShell());
    const auto show = [&](std::size_t shown, std::size_t inside) {
        const PeerId peer = world.connect(Door::control);
        world.peers[peer]->ancestors = {99, world.program(inside + 1).pid()};
        world.receive(peer, R"({"call":"stream","session":")" + ids.at(shown) + "\"}\n");
        return std::pair(peer, world.peers[peer]->received.contains("itself"));
    };
    EXPECT_FALSE(show(0, 1).second);
    EXPECT_FALSE(show(0, 1).second) << "twice is no circle";
    EXPECT_FALSE(show(0, 2).second) << "nor are two ways from one session";
    const PeerId second = show(1, 3).first;
    EXPECT_FALSE(show(2, 3).second) << "that meet again";
    EXPECT_TRUE(show(1, 0).second);
    EXPECT_TRUE(show(3, 0).second);
    world.host.connectionLost(second);
    EXPECT_TRUE(show(3, 0).second) << "by the other way";
    EXPECT_TRUE(show(3, 2).second);
    EXPECT_FALSE(show(3, 1).second);
}

/// A shell, the windows that watch it one after the other or at once, and the events that may
/// happen to them. The first test tries every order, four deep. Whatever happens, frames stay
/// whole, the window that leads sees every byte, and the host keeps no peer without a reason.
class Scene {
public:
    enum Event {
        attach,
        writeLine,
        writeMuch, ///< more than a viewer may be behind
        readLittle,
        readAll,
        type,
        vanish,
        endProgram,
        passTime,
        flood, ///< more than the log keeps and viewers are waited for
        stopTakingKeys,
        takeKeys,
        turn ///< to another window
    };

    static constexpr int eventsOfViewers = passTime + 1;
    static constexpr int eventsOfOneWindow = takeKeys + 1;
    static constexpr int events = turn + 1;

    void happen(int event) {
        FakeProgram& program = world_.program();
        switch (event) {
        case attach: {
            const auto ticket = world_.ticketFor(id_);
            windows_.push_back(world_.connect(SessionHost::Door::attach));
            world_.receive(
                windows_.back(),
                PtyAttach::hello(ticket ? ticket->token : std::string(43, 'x'), 9, 9).value());
            current_ = windows_.size() - 1;
            break;
        }
        case turn:
            current_ = windows_.empty() ? 0 : (current_ + 1) % windows_.size();
            break;
        case writeLine:
            write("text\033[c\r\n");
            break;
        case writeMuch:
            write(std::string(Viewer::window + 1, 'x') + "\n");
            break;
        case flood:
            write(std::string(OutputLog::kept + 2 * Viewer::window, 'x') + "\n");
            break;
        case readLittle:
        case readAll:
            if (isWatched())
                window().room = event == readAll ? SIZE_MAX : 7;
            break;
        case type:
            if (isWatched() && window().watchesInput)
                world_.receive(windows_[current_], PtyAttach::data(bytesOf("k")));
            break;
        case vanish:
            if (isWatched())
                world_.host.connectionLost(windows_[current_]);
            break;
        case endProgram:
            program.isOver = true;
            world_.end(0);
            break;
        case passTime:
            world_.pass(untilDeadline().value_or(Viewer::patience));
            break;
        default:
            program.appetite = event == takeKeys ? SIZE_MAX : 0;
            break;
        }
        world_.settle();
        if (!isWatched() || !window().watchesRoom)
            shown_ = read();
    }

    /// Tells whether the current window, which came last or was turned to, is connected.
    [[nodiscard]] bool isWatched() const { return !windows_.empty() && !window().isClosed; }

    /// Tells whether the program has written output that the host has not read yet.
    [[nodiscard]] bool isWriting() const { return !world_.program().output.empty(); }

    /// Returns everything that can be seen of the host from outside, amounts only as far as they
    /// matter.
    [[nodiscard]] std::vector<int> seen() const {
        const auto amount = [](std::uint64_t bytes) {
            return int{bytes > 0} + int{bytes > Viewer::window} + int{bytes > OutputLog::kept};
        };
        const FakeProgram& program = world_.program();
        std::vector<int> seen;
        const auto note = [&seen](auto... facts) {
            (seen.push_back(static_cast<int>(facts)), ...);
        };
        note(isWriting(), program.isOver, program.appetite > 0, program.watchesOutput,
             program.watchesInput, amount(read()), untilDeadline().value_or(-1));
        if (isWatched())
            note(window().room > 7, window().room > 0, window().watchesInput, window().watchesRoom,
                 amount(read() - shown_));
        return seen;
    }

    /// Lets every window read, and then the program end. Tells whether no peer was stuck, each
    /// window got whole frames, and nothing is left in the host.
    [[nodiscard]] bool endsWell() {
        world_.program().appetite = SIZE_MAX;
        for (const PeerId each : windows_)
            world_.peers[each]->room = SIZE_MAX;
        world_.pass(SessionHost::ticketLife);
        const bool isOver = world_.program().isOver;
        const bool goesOn = isOver || !isWriting();
        const bool streamsAreSound = std::ranges::all_of(windows_, [&](PeerId each) {
            const FakeConnection& connection = *world_.peers[each];
            PtyAttach::Decoder decoder;
            return (isOver || connection.isClosed || connection.watchesInput)
                   && decoder.feed(bytesOf(connection.received))
                   && (decoder.buffered() == 0 || connection.isClosed);
        });
        world_.program().isOver = true;
        world_.end(0);
        world_.pass(2 * TerminalSession::memory + 1);
        return goesOn && streamsAreSound && world_.host.isIdle() && !world_.host.deadline();
    }

private:
    [[nodiscard]] FakeConnection& window() const { return *world_.peers.at(windows_[current_]); }

    [[nodiscard]] std::optional<double> untilDeadline() const {
        return world_.host.deadline().transform(
            [this](SteadyTime due) { return due.seconds - world_.now; });
    }

    [[nodiscard]] std::uint64_t read() const { return written_ - world_.program().output.size(); }

    void write(std::string_view text) {
        world_.program().output += text;
        written_ += text.size();
    }

    SessionWorld world_;
    std::string id_ = world_.startShell();
    std::vector<PeerId> windows_;
    std::size_t current_ = 0;   ///< of these
    std::uint64_t written_ = 0; ///< bytes, by the program
    std::uint64_t shown_ = 0;   ///< of these, when the window last had all
};

TEST(SessionHostWalk, NoOrderOfEventsBreaksAStreamOrLeavesAPeerBehind) {
    constexpr int events = Scene::eventsOfViewers;
    constexpr int paths = events * events * events * events;
    for (int path = 0; path < paths; ++path) {
        int floods = 0; // one shows what several would, and takes its time
        for (int left = path; left > 0; left /= events)
            floods += left % events == Scene::writeMuch ? 1 : 0;
        if (floods > 1)
            continue;
        Scene scene;
        for (int left = path, step = 0; step < 4; ++step, left /= events)
            scene.happen(left % events);
        ASSERT_TRUE(scene.endsWell()) << path;
    }
}

/// With one window at a time the states are so few that the test reaches all of them and leaves
/// them again. With a sanitizer that takes ten times as long, so that only the first states are
/// tried.
TEST(SessionHostWalk, EveryStateOfOneWindowEndsWell) {
    using Path = std::vector<int>;
    std::set<std::vector<int>> known;
    std::deque<Path> open{Path()};
    while (!open.empty() && (!VELMO_SANITIZED || known.size() < 60)) {
        const Path path = std::move(open.front());
        open.pop_front();
        for (int event = 0; event < Scene::eventsOfOneWindow; ++event) {
            Scene scene;
            for (const int each : path)
                scene.happen(each);
            if ((event == Scene::attach && scene.isWatched())
                || ((event == Scene::flood || event == Scene::writeMuch) && scene.isWriting()))
                continue;
            scene.happen(event);
            if (!known.insert(scene.seen()).second)
                continue;
            open.push_back(path);
            open.back().push_back(event);
            ASSERT_TRUE(scene.endsWell()) << testing::PrintToString(open.back());
        }
    }
    RecordProperty("states", static_cast<int>(known.size()));
    EXPECT_GE(known.size(), VELMO_SANITIZED ? 60U : 200U);
}

TEST(SessionHostWalk, LongWaysWithSeveralWindowsEndWell) {
    forAny([](AnyValues any) {
        if (VELMO_SANITIZED && any.below(10) > 0)
            return;
        Scene scene;
        std::vector<int> path;
        for (std::size_t steps = any.below(30); steps > 0; --steps) {
            path.push_back(static_cast<int>(any.below(Scene::events)));
            if (path.back() != Scene::flood || !scene.isWriting())
                scene.happen(path.back());
        }
        ASSERT_TRUE(scene.endsWell()) << testing::PrintToString(path);
    });
}

/// Returns the output in what a window was sent, and of a frame that is cut what there is of it.
std::string outputIn(std::string_view frames) {
    std::string output;
    while (frames.size() > FrameHeader::bytes) {
        const auto header = FrameHeader::read(bytesOf(frames));
        const std::string_view payload = frames.substr(FrameHeader::bytes, header.length);
        if (header.type == std::to_underlying(PtyAttach::FrameType::data))
            output += payload;
        frames.remove_prefix(FrameHeader::bytes + payload.size());
    }
    return output;
}

std::size_t countOf(std::string_view what, std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

/// A program asks its terminal, while windows come, type, stop reading and leave.
class Questions {
public:
    enum Event { open, type, stall, read, leave, nothing };

    void write(std::string_view output) {
        world_.program().output += output;
        world_.settle();
    }

    void happen(AnyValues& any) {
        const auto event = static_cast<Event>(any.below(nothing + 1));
        if (event == open && windows_.size() < 4) {
            const std::size_t room = any.below(3) == 0 ? any.below(200) : SIZE_MAX;
            windows_.push_back(
                attachWindow(world_, id_, {.room = room, .viewOnly = any.below(4) == 0}));
            EXPECT_EQ(countOf(query, outputIn(world_.peers[windows_.back()]->received)), 0U)
                << "a replay asks nothing";
        }
        if (windows_.empty())
            return;
        const auto chosen =
            windows_.begin() + static_cast<std::ptrdiff_t>(any.below(windows_.size()));
        FakeConnection& window = *world_.peers[*chosen];
        if (event == type && window.watchesInput)
            world_.receive(*chosen, PtyAttach::data(bytesOf("k")));
        if (event == stall)
            window.room = any.below(9);
        if (event == read)
            window.room = SIZE_MAX;
        world_.settle();
        if (event == leave) {
            if (any.below(2) == 0)
                window.room = any.below(99);
            world_.host.connectionLost(*chosen);
            windows_.erase(chosen);
        }
    }

    /// Lets all windows read, and returns how often the host has answered and the program's query
    /// has got to a terminal.
    std::size_t answers() {
        std::size_t count = 0;
        for (const auto& [peer, connection] : world_.peers) {
            connection->room = SIZE_MAX;
            world_.settle();
            count += countOf(query, outputIn(connection->received));
        }
        return count + countOf("\033[0n", world_.program().typed);
    }

    static constexpr std::string_view query = "\033[5n";

private:
    SessionWorld world_;
    std::string id_ = world_.startShell();
    std::vector<PeerId> windows_;
};

TEST(SessionHostWalk, EachQueryIsAnsweredOnceByTheHostOrAWindow) {
    forAny([](AnyValues any) {
        Questions scene;
        std::string output;
        for (int i = 0; i < 10; ++i)
            output += std::string(any.below(3), 'x').append(Questions::query);
        while (!output.empty()) {
            const std::size_t count = std::min(any.below(6), output.size());
            scene.write(output.substr(0, count));
            output.erase(0, count);
            scene.happen(any);
        }
        EXPECT_EQ(scene.answers(), 10U);
    });
}

} // namespace
} // namespace velmo
