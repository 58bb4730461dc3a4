#pragma once

#include "core/terminal/AttachTicket.h"
#include "sessions/SessionHost.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// A program in a terminal session. The test decides what it writes, and reads here what was done
/// to it.
class FakeProgram final : public Program {
public:
    explicit FakeProgram(std::uint32_t process) : process_(process) {}

    [[nodiscard]] std::uint32_t pid() const override { return process_; }

    [[nodiscard]] Output read(std::span<std::uint8_t> room) override {
        const std::size_t count = std::min({room.size(), output.size(), mostAtOnce});
        output.copy(reinterpret_cast<char*>(room.data()), count);
        output.erase(0, count);
        return {.bytes = count, .isOver = count == 0 && isOver};
    }

    [[nodiscard]] std::size_t write(ByteView keys) override {
        const std::size_t count = std::min({keys.size(), appetite, mostTaken});
        appetite -= count;
        typed += textOf(keys.first(count));
        return count;
    }

    void setSize(PtyFrame::Size size) override { sizes.push_back(size); }

    void signalForeground(int signal) override { signals.push_back(signal); }

    bool signalAll(int signal) override {
        if (signal != 0)
            endings.push_back(signal);
        return hasProcesses;
    }

    void watch(bool readable, bool writable) override {
        watchesOutput = readable;
        watchesInput = writable;
    }

    std::string output;                ///< to be read
    bool isOver = false;               ///< ended after its output
    std::size_t mostAtOnce = SIZE_MAX; ///< bytes that one read returns
    std::string typed;                 ///< what has arrived
    std::size_t appetite = SIZE_MAX;   ///< bytes of typing that the program still takes
    std::size_t mostTaken = SIZE_MAX;  ///< bytes of typing that one write takes
    std::vector<PtyFrame::Size> sizes; ///< set by the host
    std::vector<int> signals;          ///< sent to the foreground
    std::vector<int> endings;          ///< sent to all processes
    bool hasProcesses = true;          ///< in its session
    bool watchesOutput = false;
    bool watchesInput = false;

private:
    std::uint32_t process_;
};

/// A peer, as the host sees it.
class FakeConnection final : public Connection {
public:
    [[nodiscard]] std::optional<std::size_t> send(std::span<const ByteView> pieces) override {
        if (isGone)
            return std::nullopt;
        std::size_t sent = 0;
        for (const ByteView piece : pieces) {
            const std::size_t count = std::min(piece.size(), room);
            received += textOf(piece.first(count));
            room -= count;
            sent += count;
        }
        return sent;
    }

    void watch(bool readable, bool writable) override {
        watchesInput = readable;
        watchesRoom = writable;
    }

    [[nodiscard]] std::vector<std::uint32_t> ancestry() const override { return ancestors; }

    void close() override { isClosed = true; }

    std::string received;                 ///< by the peer
    std::size_t room = SIZE_MAX;          ///< bytes that the peer still takes
    std::vector<std::uint32_t> ancestors; ///< process ids
    bool isGone = false;
    bool isClosed = false;
    bool watchesInput = false;
    bool watchesRoom = false;
};

/// Files of transcripts, in memory.
class FakeTranscripts final : public TranscriptFiles {
public:
    /// A file, and what its path with ".1" behind it leads to.
    struct File {
        std::string content;
        std::string older;
        bool isOpen = false;
    };

    [[nodiscard]] std::expected<std::unique_ptr<TranscriptFile>, Fault>
    open(const std::string& path) override {
        if (path.starts_with("/missing"))
            return std::unexpected(Fault::unusable);
        File& file = files[path];
        if (std::exchange(file.isOpen, true))
            return std::unexpected(Fault::busy);
        return std::make_unique<Open>(*this, file);
    }

    std::map<std::string, File> files; ///< by path
    bool diskIsFull = false;
    bool turns = true; ///< a file may get its second name

private:
    class Open final : public TranscriptFile {
    public:
        Open(FakeTranscripts& disk, File& file) : disk_(disk), file_(file) {}

        ~Open() override { file_.isOpen = false; }

        [[nodiscard]] std::uint64_t size() const override { return file_.content.size(); }

        [[nodiscard]] bool append(ByteView output) override {
            file_.content += disk_.diskIsFull ? "" : textOf(output);
            return !disk_.diskIsFull;
        }

        [[nodiscard]] bool turn() override {
            if (disk_.turns)
                file_.older = std::exchange(file_.content, {});
            return disk_.turns;
        }

    private:
        FakeTranscripts& disk_;
        File& file_;
    };
};

/// A session host with its surroundings, in one process and with a clock that tests move.
class SessionWorld final : public Programs, public TicketStore, public Pty::FileSystem {
public:
    using Door = SessionHost::Door;

    [[nodiscard]] std::shared_ptr<Program> start(SessionNumber session, const SpawnRequest& request,
                                                 const Pty::Environment& environment) override {
        if (startFails)
            return nullptr;
        lastRequest = request;
        lastEnvironment = environment;
        const auto process = static_cast<std::uint32_t>(4710 + std::to_underlying(session));
        return programs[session] = std::make_shared<FakeProgram>(process);
    }

    [[nodiscard]] std::string folder() const override { return "/private"; }

    [[nodiscard]] bool write(const std::string& name, std::string_view content) override {
        return !diskIsFull && files.emplace(name, content).second;
    }

    [[nodiscard]] bool link(const std::string& name, const std::string& target) override {
        if (!diskIsFull)
            files[name] = target;
        return !diskIsFull;
    }

    void remove(const std::string& name) override { files.erase(name); }

    // A disk with shells and one home.
    [[nodiscard]] std::optional<std::string> realpath(std::string_view path) const override {
        return std::string(path);
    }

    [[nodiscard]] bool isDirectory(std::string_view path) const override {
        return path.starts_with("/home/me");
    }

    [[nodiscard]] bool isExecutable(std::string_view path) const override {
        return path != "/bin/zsh";
    }

    [[nodiscard]] bool isWorldWritable(std::string_view /*path*/) const override { return false; }

    [[nodiscard]] std::optional<std::string> home(const Pty::Environment&) const override {
        return "/home/me";
    }

    /// Connects a peer. The connection stays in `peers`.
    PeerId connect(Door door) {
        const PeerId peer{++lastPeer};
        peers[peer] = std::make_shared<FakeConnection>();
        host.connected(peer, peers[peer], door);
        return peer;
    }

    void receive(PeerId peer, std::string_view bytes) { host.received(peer, bytesOf(bytes)); }

    void receive(PeerId peer, ByteView bytes) { host.received(peer, bytes); }

    /// Makes one call on a connection of its own and returns the reply.
    SessionReplyLine call(const SessionCallLine& call) {
        const PeerId peer = connect(Door::control);
        receive(peer, encodeJson(call).value() + "\n");
        const std::string reply = peers[peer]->received;
        host.connectionLost(peer);
        return decodeRecord<SessionReplyLine>(reply).value_or(SessionReplyLine{});
    }

    static SessionCallLine startCall(std::string_view program = "/bin/bash") {
        return {.call = SessionCall::start,
                .words = std::vector<std::string>{"--cwd", "/home/me", "--cols", "80", "--rows",
                                                  "24", "--", std::string(program), "-l"}};
    }

    /// Starts a shell and returns the session's id.
    std::string startShell() { return call(startCall()).session.value_or(""); }

    /// Returns the ticket that the host writes for the session.
    std::optional<PtyAttach::Ticket> ticketFor(const std::string& session, bool viewOnly = false) {
        const auto reply =
            call({.call = SessionCall::ticket, .session = session, .viewOnly = viewOnly});
        if (!reply.ticket)
            return std::nullopt;
        return PtyAttach::parseTicket(files.at(reply.ticket->substr(folder().size() + 1)));
    }

    /// Plays events until none is left that the host watches for.
    void settle() {
        while (stepPrograms() || stepPeers()) {
        }
    }

    /// Advances the clock, and runs everything that falls due on the way.
    void pass(double seconds) {
        const double end = now + seconds;
        settle();
        for (auto due = host.deadline(); due && due->seconds <= end; due = host.deadline()) {
            now = std::max(now, due->seconds);
            host.timePasses();
            settle();
        }
        now = end;
    }

    [[nodiscard]] FakeProgram& program(std::uint64_t number = 1) const {
        return *programs.at(SessionNumber{number});
    }

    void end(std::int32_t waitStatus, std::uint64_t number = 1) {
        host.programEnded(SessionNumber{number}, waitStatus);
    }

    double now = 1000;
    bool startFails = false;
    bool diskIsFull = false;
    FakeTranscripts transcripts;
    std::vector<std::string> logged;
    std::map<SessionNumber, std::shared_ptr<FakeProgram>> programs;
    std::map<PeerId, std::shared_ptr<FakeConnection>> peers;
    std::map<std::string, std::string> files; ///< tickets, and targets of links, by name
    SpawnRequest lastRequest;
    Pty::Environment lastEnvironment;
    std::uint64_t lastPeer = 0;
    std::uint64_t lastRandom = 0;
    SessionHost host{{.programs = *this,
                      .tickets = *this,
                      .transcripts = transcripts,
                      .files = *this,
                      .steadyTime = [this] { return SteadyTime{now}; },
                      .wallTime = [this] { return WallTime{now + 1e9}; },
                      .random =
                          [this](std::span<std::uint8_t> bytes) {
                              for (std::uint8_t& byte : bytes) {
                                  lastRandom = lastRandom * 6364136223846793005U + 1;
                                  byte = static_cast<std::uint8_t>(lastRandom >> 56);
                              }
                          },
                      .log = [this](std::string_view message) { logged.emplace_back(message); }}};

private:
    bool stepPrograms() {
        bool any = false;
        for (const auto& [session, program] : programs) {
            if (program.use_count() == 1)
                continue; // the host has closed it
            const bool hasOutput = !program->output.empty() || program->isOver;
            if ((program->watchesOutput && hasOutput)
                || (program->watchesInput && program->appetite > 0)) {
                host.programReady(session);
                any = true;
            }
        }
        return any;
    }

    bool stepPeers() {
        bool any = false;
        for (const auto& [peer, connection] : peers) {
            if (!connection->isClosed && connection->watchesRoom
                && (connection->room > 0 || connection->isGone)) {
                host.writable(peer);
                any = true;
            }
        }
        return any;
    }
};

} // namespace velmo
