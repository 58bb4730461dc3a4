#include "core/terminal/TerminalModes.h"

#include "core/terminal/AttachLabels.h"

#include <algorithm>
#include <array>

namespace velmo {

namespace {

using ControlSequence::Csi;

constexpr std::size_t maxKeyboards = 8;
constexpr std::size_t maxStyle = 512; ///< bytes; no program stacks up more without a reset

constexpr std::string_view esc = "\033";
constexpr std::string_view csiStart = "\033[";

} // namespace

void TerminalModes::follow(ByteView output) {
    reader_.readSequences(output,
                          [this](const SequenceReader::Sequence& sequence) { obey(sequence); });
}

void TerminalModes::obey(const SequenceReader::Sequence& sequence) {
    if (sequence.kind == SequenceReader::Kind::escape) {
        obeyEscape(sequence.text);
    } else if (sequence.kind == SequenceReader::Kind::osc) {
        if (auto title = ControlSequence::titleOf(sequence.text))
            state_.title = *std::move(title);
    } else if (sequence.kind == SequenceReader::Kind::csi) {
        if (const auto csi = Csi::parse(sequence.text))
            obeyCsi(*csi);
    }
}

void TerminalModes::obeyEscape(std::string_view escape) {
    if (escape == "c")
        state_ = {};
    else if (escape == "=" || escape == ">")
        state_.isKeypadOfApplication = escape == "=";
    else if (escape.size() == 2 && escape.front() == '(')
        state_.charset = escape == "(B" ? "" : escape;
}

void TerminalModes::obeyCsi(const Csi& csi) {
    const bool sets = csi.final == 'h';
    if ((sets || csi.final == 'l') && csi.intermediates.empty()) {
        if (csi.marker == "?")
            setModes(csi);
        else if (csi.marker.empty() && std::ranges::count(csi.numbers(), 4) > 0)
            state_.inserts = sets;
    } else if (csi.final == 'u') {
        setKeyboard(csi);
    } else if (csi.final == 'm' && csi.marker.empty() && csi.intermediates.empty()) {
        setStyle(csi);
    } else if (csi.final == 'r' && csi.marker.empty() && csi.intermediates.empty()) {
        state_.region = csi.parameters.empty() ? "" : std::string(csi.parameters) + "r";
    } else if (csi.final == 'q' && csi.intermediates == " ") {
        state_.cursorStyle = std::string(csi.parameters) + " q";
    } else if (csi.final == 'p' && csi.intermediates == "!") {
        softReset();
    }
}

void TerminalModes::setModes(const Csi& csi) {
    const bool sets = csi.final == 'h';
    for (const std::int32_t number : csi.numbers()) {
        if (const auto* const mode = ControlSequence::findMode(number))
            state_.unusual.set(static_cast<std::size_t>(mode - ControlSequence::modes.data()),
                               sets != mode->isUsuallySet);
    }
}

void TerminalModes::setKeyboard(const Csi& csi) {
    auto& stack = state_.keyboard;
    const std::int32_t number = csi.numbers().front();
    if (csi.marker == ">") {
        if (stack.size() == maxKeyboards)
            stack.erase(stack.begin());
        stack.push_back(number);
    } else if (csi.marker == "<") {
        const auto count = std::min<std::ptrdiff_t>(std::max(number, 1), std::ssize(stack));
        stack.erase(stack.end() - count, stack.end());
    } else if (csi.marker == "=" && !stack.empty()) {
        stack.back() = number;
    }
}

void TerminalModes::setStyle(const Csi& csi) {
    if (csi.numbers().front() == 0)
        state_.style.clear();
    if (csi.parameters.empty() || csi.parameters == "0")
        return;
    std::string sequence(csiStart);
    sequence.append(csi.parameters).append("m");
    while (!state_.style.empty() && state_.style.size() + sequence.size() > maxStyle)
        state_.style.erase(0, std::min(state_.style.find('m') + 1, state_.style.size()));
    if (sequence.size() <= maxStyle)
        state_.style += sequence;
}

/// Obeys DECSTR, which leaves screens, mouse and paste modes alone.
void TerminalModes::softReset() {
    constexpr auto touched = std::to_array<std::int32_t>({1, 6, 7, 25});
    for (const std::int32_t number : touched)
        state_.unusual.reset(static_cast<std::size_t>(ControlSequence::findMode(number)
                                                      - ControlSequence::modes.data()));
    state_.inserts = false;
    state_.isKeypadOfApplication = false;
    state_.charset.clear();
    state_.region.clear();
    state_.style.clear();
}

std::string TerminalModes::sequences() const {
    std::string text;
    const auto csi = [&](const auto&... parts) {
        text += csiStart;
        ((text += parts), ...);
    };
    for (std::size_t i = 0; i < ControlSequence::modes.size(); ++i) {
        const ControlSequence::Mode& mode = ControlSequence::modes[i];
        if (state_.unusual[i])
            csi("?", std::to_string(mode.number), mode.isUsuallySet ? "l" : "h");
    }
    if (state_.inserts)
        csi("4h");
    if (state_.isKeypadOfApplication)
        text.append(esc).append("=");
    for (const std::int32_t flags : state_.keyboard)
        csi(">", std::to_string(flags), "u");
    if (!state_.charset.empty())
        text.append(esc).append(state_.charset);
    if (!state_.region.empty())
        csi(state_.region);
    if (!state_.cursorStyle.empty())
        csi(state_.cursorStyle);
    text += state_.style;
    if (!state_.title.empty())
        text += PtyAttach::titleSequence(state_.title);
    return text;
}

} // namespace velmo
