#pragma once

#include "lab/instruments/SessionWorld.h"
#include "phone/PhoneBridge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// A page, as the bridge sees it. The test decides what it sends and whether it reads.
class FakePage final : public PhoneConnection {
public:
    void send(PhoneMessage message) override { onItsWay = std::move(message); }

    void receive() override { isListenedTo = true; }

    void close(PhoneClosing why) override { closing = why; }

    /// Returns the output that the page has got, without the frames' headers.
    [[nodiscard]] std::string output() const {
        const auto decoded = PtyFrame::Decoder().feed(bytesOf(frames));
        std::string output;
        for (const auto& frame : decoded.value()) {
            if (frame.kind == PtyFrame::Kind::data)
                output += textOf(frame.payload);
        }
        return output;
    }

    std::deque<PhoneMessage> toSay;
    bool reads = true;
    std::vector<std::string> events; ///< that the page has got
    std::string frames;              ///< likewise
    std::optional<PhoneMessage> onItsWay;
    bool isListenedTo = false;
    std::optional<PhoneClosing> closing;
};

/// The computer's power, as the switch sees it.
class FakePower final : public PhonePower {
public:
    void read(std::function<void(const Reading& reading)> done) override {
        questions.push_back(std::move(done));
    }

    void keep(BatteryFloor floor,
              std::function<void(const HoldKeeper::Status& status)> changed) override {
        events.push_back("keep " + std::to_string(floor.percent()));
        change = std::move(changed);
    }

    void release() override { events.emplace_back("release"); }

    bool step() {
        if (questions.empty())
            return false;
        const auto done = std::move(questions.front());
        questions.pop_front();
        done(reading);
        return true;
    }

    Reading reading{.battery = 80, .mains = false, .report = HoldReport()};
    std::vector<std::string> events;
    std::function<void(const HoldKeeper::Status& status)> change;
    std::deque<std::function<void(const Reading& reading)>> questions;
};

/// A bridge with pages, before a session host in a world of its own.
class PhoneWorld final : public SessionLink {
public:
    static constexpr std::size_t socketRoom = 65536; ///< bytes between host and bridge

    void call(const SessionCallLine& line, OnReply done) override {
        later([this, line, done = std::move(done)] {
            done(hostServes ? std::optional(sessions.call(line)) : std::nullopt);
        });
    }

    void start(const PhoneCallLine& wanted, OnReply done) override {
        SessionCallLine line = SessionWorld::startCall();
        line.name = wanted.name;
        call(line, std::move(done));
    }

    void watch(const std::string& session, bool viewOnly, OnStream done) override {
        later([this, session, viewOnly, done = std::move(done)] {
            const PeerId peer = sessions.connect(SessionHost::Door::control);
            sessions.receive(peer, encodeJson(SessionCallLine{.call = SessionCall::stream,
                                                              .session = session,
                                                              .viewOnly = viewOnly})
                                           .value()
                                       + "\n");
            std::string& received = sessions.peers.at(peer)->received;
            const std::size_t end = received.find('\n');
            const auto reply = decodeRecord<SessionReplyLine>(received.substr(0, end)).value();
            received.erase(0, end + 1);
            if (!reply.ok)
                return done(std::unexpected(*reply.reason));
            done(std::make_unique<Stream>(*this, peer));
        });
    }

    /// Makes the request of a browser that has the page open. Members that are not given are right.
    [[nodiscard]] static HttpRequest request(std::string_view method, std::string_view target) {
        return {.method = method,
                .target = target,
                .host = "127.0.0.1:4711",
                .origin = "http://127.0.0.1:4711",
                .contentType = "application/json"};
    }

    /// Lets a device in and returns its "Cookie" header.
    std::string letIn(DeviceRights rights = DeviceRights::use, std::string_view name = "phone") {
        const std::string address = bridge.admit(rights);
        const AdmissionLine line{.code = address.substr(address.find('#') + 1),
                                 .name = std::string(name)};
        const std::string body = encodeJson(line).value();
        HttpRequest asked = request("POST", "/admit");
        asked.body = body;
        const std::string header = bridge.answer(asked).setCookie;
        return header.substr(0, header.find(';'));
    }

    /// Opens a page on the device with this "Cookie" header.
    std::shared_ptr<FakePage> open(const std::string& cookie) {
        auto page = std::make_shared<FakePage>();
        if (auto opened = bridge.open(cookie.substr(cookie.find('=') + 1), page))
            pages.emplace_back(page, std::move(opened));
        settle();
        return page;
    }

    void say(const std::shared_ptr<FakePage>& page, std::string text) {
        page->toSay.push_back({.isText = true, .content = std::move(text)});
        settle();
    }

    void type(const std::shared_ptr<FakePage>& page, ByteView frames) {
        page->toSay.push_back({.isText = false, .content = std::string(textOf(frames))});
        settle();
    }

    /// Plays events until none is left.
    void settle() {
        do
            sessions.settle();
        while (stepLater() || power.step() || stepStreams() || stepPages());
    }

    void pass(double seconds) {
        settle();
        sessions.pass(seconds);
        settle();
        std::vector<std::function<void()>> due;
        std::erase_if(timers, [&](auto& timer) {
            const bool isDue = timer.first <= sessions.now;
            if (isDue)
                due.push_back(std::move(timer.second));
            return isDue;
        });
        for (const auto& work : due)
            work();
        settle();
    }

    SessionWorld sessions;
    FakePower power;
    std::vector<std::pair<double, std::function<void()>>> timers; ///< when they are due
    bool hostServes = true;
    bool hostTakes = true; ///< what is typed
    std::vector<PhoneRecord> saved;
    bool canSave = true;
    std::vector<std::pair<std::shared_ptr<FakePage>, std::shared_ptr<PhonePage>>> pages;

private:
    class Stream final : public SessionStream {
    public:
        Stream(PhoneWorld& world, PeerId peer) : world_(world), peer_(peer) {
            world_.streams_.push_back(this);
        }

        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;

        ~Stream() override {
            std::erase(world_.streams_, this);
            world_.sessions.host.connectionLost(peer_);
        }

        void read(std::size_t most, OnRead done) override {
            most_ = most;
            onRead_ = std::move(done);
        }

        void write(ByteView bytes, std::function<void()> done) override {
            toWrite_.emplace_back(textOf(bytes), std::move(done));
        }

        bool step() {
            FakeConnection& connection = *world_.sessions.peers.at(peer_);
            if (world_.hostTakes && connection.watchesInput && !toWrite_.empty()) {
                const auto [bytes, done] = std::move(toWrite_.front());
                toWrite_.pop_front();
                world_.sessions.receive(peer_, bytes);
                done();
                return true;
            }
            if (!onRead_ || (connection.received.empty() && !connection.isClosed))
                return false;
            const std::string bytes = connection.received.substr(0, most_);
            connection.received.erase(0, bytes.size());
            connection.room = socketRoom - connection.received.size();
            std::exchange(onRead_, nullptr)(bytesOf(bytes));
            return true;
        }

    private:
        PhoneWorld& world_;
        PeerId peer_;
        std::size_t most_ = 0;
        OnRead onRead_;
        std::deque<std::pair<std::string, std::function<void()>>> toWrite_;
    };

    void later(std::function<void()> work) { later_.push_back(std::move(work)); }

    bool stepLater() {
        if (later_.empty())
            return false;
        const auto work = std::move(later_.front());
        later_.pop_front();
        work();
        return true;
    }

    bool stepStreams() {
        return std::ranges::any_of(std::vector(streams_),
                                   [](Stream* each) { return each->step(); });
    }

    bool stepPages() {
        return std::ranges::any_of(std::vector(pages), [](const auto& each) {
            const auto& [fake, page] = each;
            return !fake->closing && (stepReading(*fake, *page) || stepSaying(*fake, *page));
        });
    }

    static bool stepReading(FakePage& fake, PhonePage& page) {
        if (!fake.reads || !fake.onItsWay)
            return false;
        const PhoneMessage message = *std::exchange(fake.onItsWay, std::nullopt);
        if (message.isText)
            fake.events.push_back(message.content);
        else
            fake.frames += message.content;
        page.sent();
        return true;
    }

    static bool stepSaying(FakePage& fake, PhonePage& page) {
        if (!fake.isListenedTo || fake.toSay.empty())
            return false;
        fake.isListenedTo = false;
        const PhoneMessage message = std::move(fake.toSay.front());
        fake.toSay.pop_front();
        page.received(message);
        return true;
    }

    std::deque<std::function<void()>> later_;
    std::vector<Stream*> streams_;

    static constexpr std::array<std::uint8_t, 2> fileBytes{0x1F, 0x8B};
    static constexpr std::array<PageFile, 1> files{{{.path = "/",
                                                     .contentType = "text/html; charset=utf-8",
                                                     .gzipped = fileBytes,
                                                     .tag = "\"1\""}}};

public:
    AwakeSwitch awake{{.sessions = *this,
                       .power = power,
                       .wallTime = [this] { return WallTime{sessions.now + 1e9}; },
                       .after =
                           [this](double seconds, std::function<void()> work) {
                               timers.emplace_back(sessions.now + seconds, std::move(work));
                           },
                       .changed = [this] { bridge.powerChanged(); }}};
    PhoneBridge bridge{{.sessions = *this,
                        .awake = &awake,
                        .files = files,
                        .random =
                            [this](std::span<std::uint8_t> bytes) {
                                for (std::uint8_t& byte : bytes) {
                                    lastRandom = lastRandom * 6364136223846793005U + 1;
                                    byte = static_cast<std::uint8_t>(lastRandom >> 56);
                                }
                            },
                        // No two cookies of a test have the same one, and none has itself.
                        .hash =
                            [](ByteView bytes) {
                                Bytes hash(bytes.begin(), bytes.end());
                                std::ranges::reverse(hash);
                                return hash;
                            },
                        .steadyTime = [this] { return SteadyTime{sessions.now}; },
                        .wallTime = [this] { return WallTime{sessions.now + 1e9}; },
                        .save =
                            [this](const PhoneRecord& record) {
                                if (canSave)
                                    saved.push_back(record);
                                return canSave;
                            }},
                       {.port = 4711}};

private:
    std::uint64_t lastRandom = 0;
};

} // namespace velmo
