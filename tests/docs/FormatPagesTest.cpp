#include "core/clipboard/ClipboardReply.h"
#include "core/clipboard/ClipboardWatchLine.h"
#include "core/clipboard/ClipboardWrite.h"
#include "core/input/Hotkey.h"
#include "core/input/InputDaemonWire.h"
#include "core/input/InputMessage.h"
#include "core/power/PowerService.h"
#include "core/probes/SignatureRenderer.h"
#include "core/terminal/AttachTicket.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/PtyFrame.h"
#include "platform/simulated/CallLine.h"

#include "lab/instruments/SessionWorld.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// Runs the worked examples on the pages of docs/formats.
namespace velmo {
namespace {

/// The bodies of a page's blocks of one kind: ```hex or ```json.
std::vector<std::string> blocks(const std::string& page, const std::string& kind) {
    std::ifstream file(VELMO_FORMAT_PAGES "/" + page + ".md");
    std::vector<std::string> found;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("```")) {
            inside = line == "```" + kind;
            if (inside)
                found.emplace_back();
        } else if (inside) {
            found.back() += line + '\n';
        }
    }
    return found;
}

/// The bytes before the comment on each line, which three blanks set off.
Bytes bytesIn(const std::string& block) {
    Bytes bytes;
    std::istringstream lines(block);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(0, line.find("   ")));
        for (std::string word; words >> word;)
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(word, nullptr, 16)));
    }
    return bytes;
}

std::string example(const std::string& page, const std::string& kind) {
    const auto found = blocks(page, kind);
    return found.empty() ? "there is no such example" : found.front();
}

std::string hexExample(const std::string& page) {
    return std::string(textOf(bytesIn(example(page, "hex"))));
}

TEST(FormatPages, FramesAreRead) {
    const auto session = PtyFrame::Decoder().feed(bytesIn(example("pty-frames", "hex")));
    ASSERT_TRUE(session && session->size() == 4);
    EXPECT_EQ((*session)[0].size(), (PtyFrame::Size{.cols = 80, .rows = 24}));
    EXPECT_EQ(textOf((*session)[1].payload), "ls");
    EXPECT_EQ((*session)[2].signal(), 15);
    EXPECT_EQ(PtyFrame::encode((*session)[3].kind, (*session)[3].payload), PtyFrame::exit(-1));

    const auto frames = PtyAttach::Decoder().feed(bytesIn(example("attach-wire", "hex")));
    ASSERT_TRUE(frames && frames->size() == 3);
    const auto said = [&](std::size_t i) {
        return PtyAttach::message(std::get<PtyAttach::ControlObject>((*frames)[i]).object());
    };
    EXPECT_EQ(said(0), PtyAttach::HostMessage(PtyAttach::host::Size()));
    EXPECT_EQ(textOf(std::get<Bytes>((*frames)[1])), "\x1B[A");
    EXPECT_EQ(said(2), PtyAttach::HostMessage(PtyAttach::host::Exit{0}));
}

TEST(FormatPages, LinesAndBodiesAreRead) {
    const std::string ticket = example("attach-ticket", "json");
    EXPECT_EQ(PtyAttach::parseTicket(ticket)->session, "s_0123456789abcdef");
    EXPECT_TRUE(ticket.starts_with(hexExample("attach-ticket")));

    EXPECT_EQ(InputMessage::decode(hexExample("input-lines")),
              (InputMessage{InputMessage::Move{.dx = 12, .dy = -3}}));
    EXPECT_EQ(hexExample("input-lines") + '\n', example("input-lines", "json"));

    EXPECT_EQ(InputDaemonWire::ready() + '\n', example("input-daemon", "json"));
    EXPECT_EQ(InputDaemonWire::parse(blocks("input-daemon", "json").back())->argv,
              (std::vector<std::string>{"hotkey", R"(["cmd","k"])"}));
    EXPECT_EQ(InputDaemonWire::response(7, 0), hexExample("input-daemon"));
    EXPECT_TRUE(InputDaemonWire::parseReady(example("input-daemon", "json")));
    EXPECT_TRUE(InputDaemonWire::parseResponse(hexExample("input-daemon")));

    EXPECT_EQ(CallLine::parse(example("power-service", "json")),
              (CallLine{.call = PowerCall::hold, .batteryFloor = 20}));
    EXPECT_EQ(*encodeJson(ReplyLine{.ok = true, .reason = ""}) + '\n', hexExample("power-service"));

    const std::string signature = example("signature-body", "json");
    const auto body = SignatureBody::decode(bytesOf(signature));
    ASSERT_TRUE(body);
    EXPECT_TRUE(signature.starts_with(hexExample("signature-body")));
    const auto png = SignatureRenderer::png(body->strokes, true);
    EXPECT_EQ(Bytes(png->begin() + 16, png->begin() + 26),
              bytesIn(blocks("signature-body", "hex").back()));
}

std::set<std::string> wordsOf(const std::string& block) {
    std::istringstream words(block);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(FormatPages, TheInputDaemonsKeysAndModifiersAreAllNamed) {
    std::set<std::string> keys;
    for (const AnsiKey& key : Hotkey::keys)
        keys.emplace(key.name);
    EXPECT_EQ(wordsOf(example("input-daemon", "keys")), keys);
    std::istringstream lines(example("input-daemon", "modifiers"));
    for (const HotkeyModifier modifier : allCases<HotkeyModifier>) {
        std::string line;
        std::getline(lines, line);
        EXPECT_TRUE(line.starts_with(rawText(modifier))) << line;
        for (const std::string& name : wordsOf(line))
            EXPECT_EQ(parseHotkeyModifier(name), modifier) << name;
    }
}

TEST(FormatPages, TheDaemonsRequirementIsGiven) {
    EXPECT_EQ(powerDaemonRequirement("TEAM").value() + '\n',
              example("power-service", "requirement"));
}

TEST(FormatPages, TheSessionHostAnswersAsItSays) {
    SessionWorld world;
    const PeerId peer = world.connect(SessionHost::Door::control);
    for (const std::string& block : blocks("session-control", "json")) {
        const std::string call = block.substr(0, block.find('\n') + 1);
        world.peers[peer]->received.clear();
        world.receive(peer, call);
        const std::string behind = call.contains("stream") ? hexExample("session-control") : "";
        EXPECT_EQ(call + world.peers[peer]->received, block + behind);
    }
    std::ifstream file(VELMO_FORMAT_PAGES "/session-control.md");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    for (const std::string_view reason : rawTexts<SessionRefusal>)
        EXPECT_THAT(page, testing::HasSubstr("\n| \"" + std::string(reason) + "\" |"));
}

TEST(FormatPages, ClipboardBodiesAreReadAndWritten) {
    const auto page = blocks("clipboard", "json");
    ASSERT_EQ(page.size(), 4U);
    using Write = ClipboardWrite;
    EXPECT_EQ(Write::parse(bytesOf(page[0])), Write{Write::ConcealedText{"hunter2"}});
    EXPECT_EQ(Write::parse(bytesOf(page[1])),
              Write{Write::Png{bytesIn(example("clipboard", "hex"))}});
    const std::vector<std::string> html{"public.html"};
    const std::vector<std::string> text{"public.plain-text"};
    EXPECT_EQ(*encodeJson(ClipboardReply::ofEmpty(3).reporting(html)) + '\n', page[2]);
    EXPECT_EQ(*encodeJson(ClipboardWatchLine::of(42, text)) + '\n', page[3]);
}

} // namespace
} // namespace velmo
