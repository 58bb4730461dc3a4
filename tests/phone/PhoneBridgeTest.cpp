#include "lab/instruments/PhoneWorld.h"
#include "phone/PhoneCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::string_view home = "127.0.0.1:4711";
constexpr std::string_view ours = "http://127.0.0.1:4711";
constexpr std::string_view foreign = "http://evil.example";

class PhoneBridgeTest : public testing::Test {
protected:
    /// Opens a page that watches a new session.
    std::shared_ptr<FakePage> watching(DeviceRights rights = DeviceRights::use) {
        const std::string id = world.sessions.startShell();
        const auto page = world.open(world.letIn(rights));
        world.say(page, R"({"call":"watch","session":")" + id + "\"}");
        page->events.clear();
        return page;
    }

    void write(std::string_view output) {
        world.sessions.program().output += output;
        world.settle();
    }

    PhoneWorld world;
};

TEST_F(PhoneBridgeTest, AnswersOnlyItsOwnPageUnderItsOwnName) {
    const std::string cookie = world.letIn();

    struct Case {
        std::string_view method;
        std::string_view target;
        std::string_view host;
        std::optional<std::string_view> origin;
        std::string_view cookie;
        unsigned status;
    };

    for (const auto& each : std::to_array<Case>({
             {"GET", "/", home, {}, "", 200},
             {"HEAD", "/", home, {}, "", 200},
             {"GET", "/", home, ours, "", 200},
             {"GET", "/", "evil.example:4711", {}, "", 421},
             {"GET", "/", "", {}, "", 421},
             {"GET", "/", home, foreign, "", 403},
             {"GET", "/", home, "", "", 403},
             {"GET", "/nothing", home, {}, "", 404},
             {"GET", "/../etc/passwd", home, {}, "", 404},
             {"GET", "//", home, {}, "", 404},
             {"GET", "", home, {}, "", 404},
             {"DELETE", "/", home, ours, "", 405},
             {"POST", "/", home, ours, "", 405},
             {"GET", "/device", home, {}, "", 401},
             {"GET", "/device", home, {}, "velmo-phone=0", 401},
             {"GET", "/device", home, {}, cookie, 200},
             {"GET", "/device", home, foreign, cookie, 403},
             {"GET", "/device", "evil.example", {}, cookie, 421},
             {"GET", "/socket", home, ours, cookie, 426},
             {"GET", "/admit", home, {}, "", 405},
             {"POST", "/admit", home, {}, "", 403},
             {"POST", "/admit", home, foreign, "", 403},
             {"POST", "/admit", "evil.example", ours, "", 421},
             {"POST", "/admit", home, ours, "", 400},
         })) {
        HttpRequest request = PhoneWorld::request(each.method, each.target);
        request.host = each.host;
        request.origin = each.origin;
        request.cookie = each.cookie;
        EXPECT_EQ(world.bridge.answer(request).status, each.status)
            << each.method << ' ' << each.target << ' ' << each.host << ' '
            << each.origin.value_or("no origin") << ' ' << each.cookie;
    }
    for (const auto& each : std::to_array<Case>({
             {"GET", "/socket", home, ours, cookie, 0},
             {"GET", "/socket", home, {}, cookie, 403},
             {"GET", "/socket", home, foreign, cookie, 403},
             {"GET", "/socket", "evil.example", ours, cookie, 421},
             {"GET", "/socket", home, ours, "", 401},
             {"GET", "/socket", home, ours, "velmo-phone=0", 401},
             {"GET", "/", home, ours, cookie, 404},
         })) {
        HttpRequest request = PhoneWorld::request(each.method, each.target);
        request.host = each.host;
        request.origin = each.origin;
        request.cookie = each.cookie;
        const auto may = world.bridge.mayOpen(request);
        EXPECT_EQ(may ? 0 : may.error().status, each.status)
            << each.target << ' ' << each.host << ' ' << each.origin.value_or("no origin");
    }
}

TEST_F(PhoneBridgeTest, SendsAFileOnlyToABrowserWithoutIt) {
    HttpRequest request = PhoneWorld::request("GET", "/");
    for (const auto& [tag, status] : std::to_array<std::pair<std::string_view, unsigned>>(
             {{"", 200}, {"\"2\"", 200}, {"\"1\"", 304}})) {
        request.ifNoneMatch = tag;
        const HttpReply reply = world.bridge.answer(request);
        EXPECT_EQ(reply.status, status) << tag;
        EXPECT_EQ(reply.gzipped.empty(), status == 304) << tag;
        EXPECT_EQ(reply.tag, "\"1\"") << tag;
    }
}

TEST_F(PhoneBridgeTest, LetsADeviceInByAOneTimeCode) {
    const std::string address = world.bridge.admit(DeviceRights::view);
    const std::string_view start = "http://127.0.0.1:4711/#";
    ASSERT_TRUE(address.starts_with(start));
    const std::string code = address.substr(start.size());
    const std::string right = R"({"code":")" + code + R"(","name":"phone"})";

    struct Case {
        std::string body;
        std::string_view contentType;
        unsigned status;
    };

    for (const auto& [body, contentType, status] : std::to_array<Case>({
             {R"({"code":"00","name":"phone"})", "application/json", 403},
             {R"({"code":")" + code + "\"}", "application/json", 400},
             {right, "text/plain", 400},
             {right + std::string(PhoneBridge::maxBody, ' '), "application/json", 400},
             {right, "application/json", 200},
             {right, "application/json", 403},
         })) {
        HttpRequest request = PhoneWorld::request("POST", "/admit");
        request.body = body;
        request.contentType = contentType;
        const HttpReply reply = world.bridge.answer(request);
        EXPECT_EQ(reply.status, status) << body;
        EXPECT_EQ(reply.setCookie.empty(), status != 200) << body;
        if (status == 200) {
            EXPECT_THAT(reply.setCookie,
                        testing::MatchesRegex("velmo-phone=[0-9a-f]{64}; Path=/; Max-Age=2592000; "
                                              "HttpOnly; SameSite=Strict"));
            EXPECT_EQ(reply.text, R"({"name":"phone","rights":"view"})");
        }
    }
    ASSERT_EQ(world.saved.size(), 1U);
    EXPECT_EQ(world.saved.front().port, 4711);
    EXPECT_EQ(world.saved.front().devices, world.bridge.devices());

    HttpRequest guess = PhoneWorld::request("POST", "/admit");
    guess.body = R"({"code":"00","name":""})";
    int looked = 0;
    for (int tries = 0; tries < 10'000; ++tries)
        looked += world.bridge.answer(guess).status == 403 ? 1 : 0;
    EXPECT_LT(looked, AttemptLimit::burst);
    EXPECT_EQ(world.bridge.answer(guess).status, 429U);
}

TEST_F(PhoneBridgeTest, KeepsTheCookieToAnEncryptedWay) {
    PhoneBridge bridge({.sessions = world,
                        .files = {},
                        .random = [](std::span<std::uint8_t>) {},
                        .hash = [](ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); },
                        .steadyTime = [] { return SteadyTime{}; },
                        .wallTime = [] { return WallTime{}; },
                        .save = [](const PhoneRecord&) { return true; }},
                       {.port = 4711, .outside = "https://mac"});
    EXPECT_EQ(bridge.admit(DeviceRights::use), "https://mac/#" + std::string(32, '0'));
    HttpRequest request = PhoneWorld::request("POST", "/admit");
    request.host = "mac";
    request.origin = "https://mac";
    const std::string body = R"({"code":")" + std::string(32, '0') + R"(","name":""})";
    request.body = body;
    EXPECT_EQ(bridge.answer(request).setCookie,
              "__Host-velmo-phone=" + std::string(64, '0')
                  + "; Path=/; Max-Age=2592000; HttpOnly; SameSite=Strict; Secure");
}

TEST_F(PhoneBridgeTest, ADeviceThatIsLetInAgainLosesItsEarlierCookie) {
    const std::string cookie = world.letIn();
    const auto page = world.open(cookie);
    const std::string address = world.bridge.admit(DeviceRights::use);
    const std::string body =
        R"({"code":")" + address.substr(address.find('#') + 1) + R"(","name":"phone"})";
    HttpRequest request = PhoneWorld::request("POST", "/admit");
    request.body = body;
    request.cookie = cookie;
    EXPECT_EQ(world.bridge.answer(request).status, 200U);
    EXPECT_EQ(page->closing, PhoneClosing::revoked);
    EXPECT_THAT(world.bridge.devices(), ElementsAre(testing::Field(&Device::name, "phone")));
}

TEST_F(PhoneBridgeTest, RevokingClosesOpenPagesAtOnce) {
    const std::string first = world.letIn();
    const std::string second = world.letIn();
    const std::string third = world.letIn();
    const auto page = world.open(first);
    const auto again = world.open(first);
    const auto other = world.open(second);
    const auto last = world.open(third);
    EXPECT_FALSE(world.bridge.revoke("tablet"));
    EXPECT_TRUE(world.bridge.revoke("phone"));
    EXPECT_EQ(page->closing, PhoneClosing::revoked);
    EXPECT_EQ(again->closing, PhoneClosing::revoked);
    EXPECT_FALSE(other->closing || last->closing);
    EXPECT_EQ(world.open(first)->closing, PhoneClosing::revoked);
    EXPECT_EQ(world.saved.back().devices.size(), 2U);
    world.bridge.revokeAll();
    EXPECT_EQ(other->closing, PhoneClosing::revoked);
    EXPECT_EQ(last->closing, PhoneClosing::revoked);
    EXPECT_THAT(world.saved.back().devices, IsEmpty());
}

TEST_F(PhoneBridgeTest, RevokingIsWrittenDownWhenRepeated) {
    const std::string cookie = world.letIn();
    const auto revoke = [&](const std::string& name) {
        return obey(world.bridge, R"({"command":"revoke","name":")" + name + "\"}");
    };
    const auto page = world.open(cookie);
    world.canSave = false;
    EXPECT_EQ(revoke("phone"), "{\"ok\":true,\"saved\":false}\n");
    EXPECT_EQ(page->closing, PhoneClosing::revoked);
    EXPECT_EQ(world.saved.back().devices.size(), 1U);
    EXPECT_EQ(revoke("phone"), "{\"ok\":true,\"saved\":false}\n");
    world.canSave = true;
    EXPECT_EQ(revoke("phone"), "{\"ok\":true,\"saved\":true}\n");
    EXPECT_THAT(world.saved.back().devices, IsEmpty());
    EXPECT_EQ(revoke("phone"), "{\"ok\":false}\n");
}

TEST_F(PhoneBridgeTest, OneConnectionTooManyReplacesASilentOne) {
    const std::string cookie = world.letIn();
    HttpRequest request = PhoneWorld::request("GET", "/socket");
    request.cookie = cookie;
    std::vector<std::shared_ptr<FakePage>> open;
    for (std::size_t i = 0; i < PhoneBridge::maxPages; ++i)
        open.push_back(world.open(cookie));
    const auto full = world.bridge.mayOpen(request);
    EXPECT_EQ(full ? 0 : full.error().status, 503U);
    EXPECT_EQ(world.open(cookie)->closing, PhoneClosing::replaced);
    world.pass(PhoneBridge::silence - 1);
    world.say(open.front(), R"({"call":"list"})");
    world.pass(1);
    EXPECT_TRUE(world.bridge.mayOpen(request));
    EXPECT_FALSE(world.open(cookie)->closing);
    EXPECT_FALSE(open[0]->closing);
    EXPECT_EQ(open[1]->closing, PhoneClosing::replaced);
    EXPECT_FALSE(open[2]->closing);
}

TEST_F(PhoneBridgeTest, DoesWhatThePageAsks) {
    const auto page = world.open(world.letIn());
    EXPECT_THAT(page->events, ElementsAre(R"({"device":"phone","event":"hello","rights":"use"})"));
    page->events.clear();
    world.say(page, R"({"call":"list"})");
    world.say(page, R"({"call":"start","cols":80,"rows":24,"name":"work"})");
    world.say(page, R"({"call":"start","cols":80,"rows":24,"name":"work"})");
    world.say(page, R"({"call":"watch","session":"work"})");
    world.say(page, R"({"call":"watch","session":"nothing"})");
    world.say(page, R"({"call":"leave"})");
    world.say(page, R"({"call":"end","session":"nothing"})");
    world.say(page, R"({"call":"end","session":"work"})");
    world.hostServes = false;
    world.say(page, R"({"call":"list"})");
    ASSERT_EQ(page->events.size(), 9U);
    EXPECT_EQ(page->events[0], R"({"event":"sessions","sessions":[]})");
    EXPECT_THAT(page->events[1],
                testing::MatchesRegex(R"(\{"event":"started","session":"s_[0-9a-f]{16}"\})"));
    EXPECT_THAT(std::vector(page->events.begin() + 2, page->events.end()),
                ElementsAre(R"({"call":"start","event":"refused","reason":"name"})",
                            R"({"event":"watching","session":"work"})",
                            R"({"call":"watch","event":"refused","reason":"unknown"})",
                            R"({"event":"left"})",
                            R"({"call":"end","event":"refused","reason":"unknown"})",
                            R"({"event":"ending","session":"work"})",
                            R"({"call":"list","event":"refused","reason":"unreachable"})"));
}

TEST_F(PhoneBridgeTest, ClosesAPageThatSendsWhatItMustNotSend) {
    const std::string cookie = world.letIn();
    for (const std::string_view text :
         {"", "{}", "[]", R"({"call":"hold"})", R"({"call":"watch"})", R"({"call":"end"})",
          R"({"call":"shown"})", R"({"call":"start"})", R"({"call":"start","cols":0,"rows":1})",
          R"({"call":"start","cols":1,"rows":501})", R"({"call":"start","cols":1001,"rows":1})",
          R"({"call":"awake"})", R"({"call":"list","more":1})",
          R"({"call":"list"} )"
          "x"}) {
        const auto page = world.open(cookie);
        world.say(page, std::string(text));
        EXPECT_EQ(page->closing, PhoneClosing::malformed) << text;
    }
    // More than may be open at once: a page that was closed takes no place.
    const std::string session = world.sessions.startShell();
    for (std::size_t i = 0; i < PhoneBridge::maxPages; ++i) {
        const auto page = world.open(cookie);
        world.say(page, R"({"call":"watch","session":")" + session + "\"}");
        write("four");
        world.say(page, R"({"call":"shown","bytes":1})");
        EXPECT_FALSE(page->closing);
        const std::size_t wrong = i == 0 ? 0 : page->frames.size() + i;
        world.say(page, R"({"call":"shown","bytes":)" + std::to_string(wrong) + "}");
        EXPECT_EQ(page->closing, PhoneClosing::malformed) << wrong;
    }
}

TEST_F(PhoneBridgeTest, RelaysTheFramesOfOneSession) {
    const auto page = watching();
    write("hello\r\n");
    EXPECT_EQ(page->output(), "hello\r\n");
    world.type(page, PtyFrame::resize(100, 30).value());
    world.type(page, PtyFrame::data(bytesOf("ls\r")));
    EXPECT_EQ(world.sessions.program().typed, "ls\r");
    EXPECT_EQ(world.sessions.program().sizes.back(), (PtyFrame::Size{.cols = 100, .rows = 30}));

    world.say(page, R"({"call":"leave"})");
    world.type(page, PtyFrame::data(bytesOf("lost")));
    world.say(page, R"({"call":"shown","bytes":99})");
    EXPECT_EQ(world.sessions.program().typed, "ls\r");
    EXPECT_FALSE(page->closing);
    EXPECT_THAT(page->events, ElementsAre(R"({"event":"left"})"));
}

TEST_F(PhoneBridgeTest, WatchesNothingThatThePageHasLeftMeanwhile) {
    const std::string id = world.sessions.startShell();
    const auto page = world.open(world.letIn());
    page->events.clear();
    for (const std::string& call :
         {R"({"call":"watch","session":")" + id + "\"}", std::string(R"({"call":"leave"})")})
        world.pages.front().second->received({.isText = true, .content = call});
    world.settle();
    EXPECT_THAT(page->events, ElementsAre(R"({"event":"left"})"));
    EXPECT_EQ(world.sessions.call({.call = SessionCall::list}).sessions->front().viewers, 0);
}

TEST_F(PhoneBridgeTest, TellsThatTheHostHasClosedTheStream) {
    const auto page = watching();
    world.sessions.program().isOver = true;
    world.settle();
    world.sessions.end(0);
    world.pass(2);
    ASSERT_THAT(page->events, testing::SizeIs(1));
    EXPECT_THAT(page->events.front(), HasSubstr(R"({"event":"gone","session":)"));
    EXPECT_TRUE(page->frames.ends_with(textOf(PtyFrame::exit(0))));
}

TEST_F(PhoneBridgeTest, ADeviceThatMayOnlyViewChangesNothing) {
    const auto page = watching(DeviceRights::view);
    write("seen\x1b[c"); // and a question that this page's terminal must not answer
    EXPECT_EQ(page->output(), "seen");
    world.say(page, R"({"call":"start","cols":80,"rows":24})");
    world.say(page, R"({"call":"end","session":"bash"})");
    EXPECT_THAT(page->events, ElementsAre(R"({"call":"start","event":"refused","reason":"rights"})",
                                          R"({"call":"end","event":"refused","reason":"rights"})"));
    EXPECT_EQ(world.sessions.programs.size(), 1U);
    EXPECT_THAT(world.sessions.program().endings, IsEmpty());
    world.type(page, PtyFrame::resize(100, 30).value());
    EXPECT_EQ(page->closing, PhoneClosing::malformed);
    EXPECT_THAT(world.sessions.program().sizes,
                testing::Not(testing::Contains(PtyFrame::Size{.cols = 100, .rows = 30})));
}

TEST_F(PhoneBridgeTest, GoesAtMostAWindowAheadOfWhatThePageShows) {
    const auto page = watching();
    const std::string output(std::size_t{1} << 20, 'x');
    write(output);
    EXPECT_EQ(page->frames.size(), PhonePage::window);
    world.say(page, R"({"call":"shown","bytes":1000})");
    EXPECT_EQ(page->frames.size(), PhonePage::window + 1000);
    world.pass(Viewer::patience + 1); // the program no longer waits
    EXPECT_TRUE(world.sessions.program().output.empty());
    while (page->frames.size() < output.size()) {
        const std::size_t before = page->frames.size();
        world.say(page, R"({"call":"shown","bytes":)" + std::to_string(before) + "}");
        ASSERT_GT(page->frames.size(), before);
    }
    EXPECT_FALSE(page->closing);
}

TEST_F(PhoneBridgeTest, KeepsLittleForAPageThatDoesNotRead) {
    const auto page = watching();
    page->reads = false;
    write(std::string(std::size_t{1} << 20, 'x'));
    for (int i = 0; i < 100; ++i)
        world.say(page, R"({"call":"list"})");
    EXPECT_GE(page->toSay.size(), 100 - PhonePage::maxCalls);
    page->reads = true;
    world.settle();
    EXPECT_TRUE(page->toSay.empty());
    EXPECT_EQ(page->frames.size(), PhonePage::window);
}

TEST_F(PhoneBridgeTest, KeepsLittleOfWhatTheHostDoesNotTake) {
    const auto page = watching();
    world.hostTakes = false;
    const Bytes keys = PtyFrame::data(bytesOf(std::string(60'000, 'k')));
    for (int i = 0; i < 20; ++i)
        world.type(page, keys);
    EXPECT_EQ(page->toSay.size(), 20 - (PhonePage::maxTyped / keys.size() + 1));
    world.hostTakes = true;
    world.settle();
    EXPECT_EQ(world.sessions.program().typed.size(), 20U * 60'000);
}

TEST_F(PhoneBridgeTest, KeepsTheComputerAwakeAsLongAsASessionRuns) {
    using State = HoldKeeper::State;
    const auto page = watching();
    const auto other = world.open(world.letIn(DeviceRights::view));
    world.say(page, R"({"call":"power"})");
    EXPECT_THAT(page->events,
                ElementsAre(R"({"event":"power","power":{"battery":80,"hasDaemon":true,)"
                            R"("isAwake":false,"keeps":false,"mains":false}})"));
    world.say(other, R"({"call":"awake","on":true})");
    EXPECT_THAT(other->events.back(), HasSubstr(R"("reason":"rights")"));
    EXPECT_THAT(world.power.events, IsEmpty());

    world.say(page, R"({"call":"awake","on":true})");
    world.say(page, R"({"call":"awake","on":true})");
    world.power.change({.state = State::holding});
    world.settle();
    EXPECT_THAT(page->events.back(), HasSubstr(R"("isAwake":true,"keeps":true)"));
    world.pass(AwakeSwitch::lookInterval);
    world.pass(AwakeSwitch::lookInterval);
    EXPECT_THAT(world.power.events, ElementsAre("keep 20"));

    world.power.change({.state = State::refused, .reason = "battery"});
    world.settle();
    EXPECT_THAT(page->events.back(),
                HasSubstr(R"("isAwake":false,"keeps":true,"mains":false,"why":"battery")"));
    world.sessions.program().isOver = true;
    world.settle();
    world.sessions.end(0);
    world.pass(AwakeSwitch::lookInterval);
    EXPECT_THAT(world.power.events, ElementsAre("keep 20", "release"));
    EXPECT_THAT(page->events.back(),
                HasSubstr(R"("keeps":false,"mains":false,"why":"no session")"));
    world.power.change({.state = State::holding}); // too late
    world.settle();
    EXPECT_THAT(page->events.back(), HasSubstr(R"("isAwake":false,"keeps":false)"));
    EXPECT_THAT(world.timers, IsEmpty());
}

TEST_F(PhoneBridgeTest, TheSwitchTurnsOffForEveryReason) {
    struct Case {
        std::string_view why;
        std::function<void(const std::shared_ptr<FakePage>&)> end;
    };

    for (const auto& [why, end] : std::vector<Case>{
             {"switched off",
              [&](const auto& page) { world.say(page, R"({"call":"awake","on":false})"); }},
             {"released by another",
              [&](const auto&) {
                  world.power.change(
                      {.state = HoldKeeper::State::released, .reason = "released by another"});
              }},
             {"no session", [&](const auto&) {
                  world.hostServes = false;
                  world.pass(AwakeSwitch::lookInterval);
              }}}) {
        const auto page = watching();
        world.power.reading.report->holder = HolderReport{.program = "velmo-phone"};
        world.say(page, R"({"call":"awake","on":true})");
        EXPECT_THAT(page->events.back(), HasSubstr(R"("holder":"velmo-phone","isAwake":true)"));
        end(page);
        world.settle();
        EXPECT_EQ(world.power.events.back(), "release") << why;
        EXPECT_THAT(page->events.back(), HasSubstr("\"why\":\"" + std::string(why) + '"')) << why;
        EXPECT_THAT(page->events.back(), HasSubstr("\"keeps\":false")) << why;
    }
}

TEST_F(PhoneBridgeTest, APageThatIsGoneLeavesItsSession) {
    const auto page = watching();
    EXPECT_EQ(world.sessions.call({.call = SessionCall::list}).sessions->front().viewers, 1);
    world.bridge.gone(world.pages.front().second);
    world.pages.clear();
    EXPECT_EQ(world.sessions.call({.call = SessionCall::list}).sessions->front().viewers, 0);
    write("more");
    EXPECT_THAT(page->events, IsEmpty());
}

} // namespace
} // namespace velmo
