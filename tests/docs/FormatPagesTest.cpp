#include "core/clipboard/ClipboardReply.h"
#include "core/clipboard/ClipboardWatchLine.h"
#include "core/clipboard/ClipboardWrite.h"
#include "core/input/Gesture.h"
#include "core/input/Hotkey.h"
#include "core/input/InputDaemonWire.h"
#include "core/input/InputMessage.h"
#include "core/input/MouseClickRequest.h"
#include "core/power/HoldReasons.h"
#include "core/power/HoldReport.h"
#include "core/power/PowerService.h"
#include "core/probes/signature/SignatureRenderer.h"
#include "core/terminal/AttachTicket.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/PtyFrame.h"
#include "core/windows/DisplayRecord.h"
#include "core/windows/FocusOutcome.h"
#include "core/windows/FocusTracker.h"
#include "core/windows/FrameRecord.h"
#include "core/windows/FrameRequest.h"
#include "core/windows/MosaicEvent.h"
#include "core/windows/MosaicHotkey.h"
#include "core/windows/WindowMove.h"
#include "core/windows/WindowRaise.h"
#include "core/windows/WindowRecord.h"
#include "lab/instruments/PhoneWorld.h"
#include "lab/instruments/SessionWorld.h"
#include "phone/PhoneCommands.h"
#include "platform/simulated/CallLine.h"
#include "tests/Texts.h"

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

/// Returns the bodies of a page's blocks of one kind: ```hex or ```json.
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

/// Returns the bytes on each line; three blanks separate them from the line's comment.
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

std::string contentOf(const std::string& page) {
    std::ifstream file(VELMO_FORMAT_PAGES "/" + page + ".md");
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Returns the words in quotes between two passages of a page.
std::vector<std::string> wordsBetween(const std::string& page, const std::string& from,
                                      const std::string& to) {
    const std::string whole = contentOf(page);
    const std::size_t begin = std::min(whole.find(from), whole.size()) + from.size();
    std::vector<std::string> words;
    std::istringstream passage(
        whole.substr(std::min(begin, whole.size()), whole.find(to, begin) - begin));
    for (std::string word; std::getline(passage, word, '"') && std::getline(passage, word, '"');)
        words.push_back(word);
    return words;
}

/// Returns the words in the first column of the table with this heading, without their quotes.
std::vector<std::string> rowsBelow(const std::string& page, const std::string& heading) {
    std::istringstream lines(contentOf(page));
    std::string line;
    while (std::getline(lines, line) && !line.starts_with("| " + heading + " |")) {
    }
    std::getline(lines, line);
    std::vector<std::string> words;
    while (std::getline(lines, line) && line.starts_with("| ")) {
        std::istringstream cell(line.substr(2, line.find(" |", 1) - 2));
        for (std::string word; std::getline(cell, word, ',');) {
            std::erase_if(word, [](char c) { return c == '"' || c == ' '; });
            words.push_back(word);
        }
    }
    return words;
}

/// The keys of a record's JSON form.
template<Record R>
std::vector<std::string_view> keysOf() {
    return std::apply(
        [](const auto&... listed) { return std::vector<std::string_view>{listed.name...}; },
        R::fields);
}

TEST(FormatPages, ListsOfWordsMatchTheCode) {
    using testing::UnorderedElementsAreArray;

    Strings modifiers;
    for (const MosaicModifier& modifier : MosaicHotkey::modifierFlags)
        modifiers.emplace_back(modifier.name);
    EXPECT_THAT(wordsBetween("mosaic", "| modifiers |", "\n"),
                UnorderedElementsAreArray(modifiers));
    EXPECT_THAT(rowsBelow("windows", "member"), UnorderedElementsAreArray(keysOf<WindowRecord>()));
    EXPECT_THAT(rowsBelow("windows", "outcome"), UnorderedElementsAreArray(keysOf<FocusOutcome>()));
    EXPECT_THAT(rowsBelow("frames", "member"), UnorderedElementsAreArray(keysOf<FrameRecord>()));
    EXPECT_THAT(rowsBelow("displays", "member"),
                UnorderedElementsAreArray(keysOf<DisplayRecord>()));
    EXPECT_THAT(wordsBetween("displays", "| \"safe\" |", ":"),
                UnorderedElementsAreArray(keysOf<SafeInsets>()));
    EXPECT_THAT(rowsBelow("focus", "member"), UnorderedElementsAreArray(keysOf<FocusEvent>()));

    const struct {
        std::vector<std::string> words;
        std::span<const std::string_view> known;
    } lists[] = {
        {rowsBelow("power-service", "call"), rawTexts<PowerCall>},
        {rowsBelow("power-service", "reason"), rawTexts<HoldRefusal>},
        {wordsBetween("power-service", "ended by one of these words:", "."), rawTexts<HoldEnding>},
        {rowsBelow("session-control", "\"call\""), rawTexts<SessionCall>},
        {rowsBelow("session-control", "\"reason\""), rawTexts<SessionRefusal>},
        {wordsBetween("input-lines", "| keys |", "\n"), InputMessage::keys},
        {wordsBetween("input-lines", "| gestures |", "\n"), rawTexts<Gesture>},
        {rowsBelow("input-daemon", "verb"), InputDaemonWire::verbs},
        {wordsBetween("input-daemon", "}`: \"button\": ", ";"),
         rawTexts<MouseClickRequest::Button>},
        {wordsBetween("signature-body", "| \"color\" |", "\n"), rawTexts<SignatureBody::Color>},
        {rowsBelow("windows", "refusal"), rawTexts<WindowRaise::Refusal>},
        {rowsBelow("frames", "refusal"), rawTexts<WindowMove::Refusal>},
        {rowsBelow("mosaic", "\"type\""), rawTexts<MosaicEventType>},
        {wordsBetween("mosaic", "| actions |", "\n"), MosaicHotkey::ids},
    };

    for (const auto& [words, known] : lists)
        EXPECT_THAT(words, UnorderedElementsAreArray(known));
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

TEST(FormatPages, TheSessionHostRepliesAsDocumented) {
    SessionWorld world;
    const PeerId peer = world.connect(SessionHost::Door::control);
    for (const std::string& block : blocks("session-control", "json")) {
        const std::string call = block.substr(0, block.find('\n') + 1);
        world.peers[peer]->received.clear();
        world.receive(peer, call);
        const std::string behind = call.contains("stream") ? hexExample("session-control") : "";
        EXPECT_EQ(call + world.peers[peer]->received, block + behind);
    }
}

TEST(FormatPages, ThePhonesBridgeRepliesAsDocumented) {
    PhoneWorld world;
    const auto page = world.open(world.letIn());
    for (const std::string& block : blocks("phone-socket", "json")) {
        const std::string call = block.substr(0, block.find('\n'));
        page->events.clear();
        page->frames.clear();
        world.say(page, call);
        EXPECT_THAT(page->events, testing::ElementsAre(block.substr(
                                      call.size() + 1, block.size() - call.size() - 2)));
        if (block.contains("watching")) {
            EXPECT_EQ(page->frames, hexExample("phone-socket"));
        }
    }
    PhoneWorld empty;
    for (const std::string& block : blocks("phone-commands", "json")) {
        const std::string command = block.substr(0, block.find('\n'));
        EXPECT_EQ(command + '\n' + obey(empty.bridge, command), block);
    }
}

/// What is written of a record that was read off a page.
template<Record R>
std::string again(const std::string& block) {
    return encodeJson(decodeRecord<R>(block).value()).value() + '\n';
}

TEST(FormatPages, WindowsAndDisplaysAreTold) {
    const auto windows = blocks("windows", "json");
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(again<WindowRecord>(windows[0]), windows[0]);
    EXPECT_EQ(again<FocusOutcome>(windows[1]), windows[1]);
    EXPECT_EQ(again<FrameRecord>(example("frames", "json")), example("frames", "json"));
    EXPECT_EQ(again<DisplayRecord>(example("displays", "json")), example("displays", "json"));

    const auto window = decodeRecord<WindowRecord>(windows[0]).value();
    EXPECT_EQ(WindowRequest::words(window), words(example("windows", "words")));
    const auto frame = decodeRecord<FrameRecord>(example("frames", "json")).value();
    const WindowBounds bounds{frame.x, frame.y, frame.width, frame.height};
    EXPECT_EQ(FrameRequest::words(window, bounds), words(example("frames", "words")));
}

TEST(FormatPages, FocusAndMosaicEventsAreWritten) {
    EXPECT_EQ(encodeJson(FocusTracker().observe({.editable = true}).value()).value() + '\n',
              example("focus", "json"));
    const auto events = blocks("mosaic", "json");
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(encodeJson(MosaicEvent::ofAction("grid")).value() + '\n', events[0]);
    EXPECT_EQ(encodeJson(MosaicEvent::ofPause(true)).value() + '\n', events[1]);
    const Strings lines = words(example("mosaic", "lines"));
    EXPECT_EQ(MosaicHotkey::parseAll(lines).size(), lines.size());
    for (const AnsiKey& key : MosaicHotkey::keyCodes) {
        if (key.name.size() > 1) {
            EXPECT_THAT(wordsBetween("mosaic", "| keys |", "\n"), testing::Contains(key.name));
        }
    }
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
