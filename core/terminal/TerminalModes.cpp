#include "core/terminal/TerminalModes.h"

#include "core/support/Decimal.h"
#include "core/terminal/AttachLabels.h"

#include <algorithm>
#include <array>

namespace velmo {

namespace {

using ControlSequence::Csi;

constexpr std::size_t maxKeyboards = 8;
constexpr std::int32_t maxKeyModifiers = 8;
constexpr std::size_t maxColour = 32; ///< bytes: "rgb:ffff/ffff/ffff" has 18
constexpr std::int32_t maxPalette = 256;
constexpr std::size_t maxFolder = 512; ///< bytes

constexpr auto alternateScreens = std::to_array<std::int32_t>({1049, 1047, 47});
constexpr std::int32_t originInRegion = 6;

constexpr std::string_view esc = "\033";
constexpr std::string_view csiStart = "\033[";
constexpr std::string_view stringEnd = "\033\\";
constexpr std::string_view noRegion = "\033[r";
constexpr std::string_view shiftIn = "\x0F";

std::size_t indexOf(const ControlSequence::Mode& mode) {
    return static_cast<std::size_t>(&mode - ControlSequence::modes.data());
}

bool movesCursor(const ControlSequence::Mode& mode) {
    return mode.number == originInRegion
           || std::ranges::find(alternateScreens, mode.number) != alternateScreens.end();
}

std::size_t indexOf(std::int32_t knownMode) {
    return indexOf(*ControlSequence::findMode(knownMode));
}

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
        setColoursAndFolder(sequence.text);
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
    } else if (csi.final == 'm' && csi.marker == ">") {
        setKeyModifiers(csi);
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
            state_.unusual.set(indexOf(*mode), sets != mode->isUsuallySet);
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

/// Obeys CSI > number ; value m. Without a value the terminal uses its own again; without
/// a number too, the terminal does so for every number.
void TerminalModes::setKeyModifiers(const Csi& csi) {
    std::string_view value = csi.parameters;
    ControlSequence::takeField(value, ';');
    const std::int32_t number = csi.numbers().front();
    if (csi.parameters.empty())
        state_.keyModifiers.clear();
    else if (value.empty() || value.size() > maxColour || number >= maxKeyModifiers)
        state_.keyModifiers.erase(number);
    else
        state_.keyModifiers[number] = value;
}

/// Obeys OSC 7 ; folder, OSC 4 ; number ; colour (several at once too), OSC 10, 11 and 12 ; colour,
/// and what resets them.
void TerminalModes::setColoursAndFolder(std::string_view osc) {
    if (!ControlSequence::isMarkOrColour(osc))
        return;
    const std::string_view command = ControlSequence::takeField(osc, ';');
    if (command == "7" && osc.size() <= maxFolder)
        state_.folder = osc;
    if (command == "4") {
        while (!osc.empty()) {
            const auto number =
                Decimal::parseUnsigned<std::int32_t>(ControlSequence::takeField(osc, ';'));
            const std::string_view colour = ControlSequence::takeField(osc, ';');
            if (number && *number < maxPalette && !colour.empty() && colour.size() <= maxColour)
                state_.colours["4;" + std::to_string(*number)] = colour;
        }
    } else if (command == "10" || command == "11" || command == "12") {
        if (!osc.empty() && osc.size() <= maxColour && !osc.contains(';'))
            state_.colours[std::string(command)] = osc;
    } else {
        resetColours(command, osc);
    }
}

void TerminalModes::resetColours(std::string_view command, std::string_view numbers) {
    if (command == "110" || command == "111" || command == "112")
        state_.colours.erase(std::string(command.substr(1)));
    if (command != "104")
        return;
    if (numbers.empty())
        std::erase_if(state_.colours,
                      [](const auto& each) { return each.first.starts_with("4;"); });
    while (!numbers.empty())
        state_.colours.erase("4;" + std::string(ControlSequence::takeField(numbers, ';')));
}

/// Obeys DECSTR, which leaves screens, mouse and paste modes alone.
void TerminalModes::softReset() {
    constexpr auto touched = std::to_array<std::int32_t>({1, 6, 7, 25, 69});
    for (const std::int32_t number : touched)
        state_.unusual.reset(indexOf(number));
    state_.inserts = false;
    state_.isKeypadOfApplication = false;
    state_.charset.clear();
    state_.region.clear();
}

std::string TerminalModes::sequences() const {
    std::string text;
    const auto csi = [&](const auto&... parts) {
        text += csiStart;
        ((text += parts), ...);
    };
    for (std::size_t i = 0; i < ControlSequence::modes.size(); ++i) {
        const ControlSequence::Mode& mode = ControlSequence::modes[i];
        if (state_.unusual[i] && mode.isReplayed && !movesCursor(mode))
            csi("?", std::to_string(mode.number), mode.isUsuallySet ? "l" : "h");
    }
    if (state_.inserts)
        csi("4h");
    if (state_.isKeypadOfApplication)
        text.append(esc).append("=");
    for (const std::int32_t flags : state_.keyboard)
        csi(">", std::to_string(flags), "u");
    for (const auto& [number, value] : state_.keyModifiers)
        csi(">", std::to_string(number), ";", value, "m");
    for (const auto& [what, colour] : state_.colours)
        text.append(esc).append("]").append(what).append(";").append(colour).append(stringEnd);
    if (!state_.cursorStyle.empty())
        csi(state_.cursorStyle);
    if (!state_.folder.empty())
        text.append(esc).append("]7;").append(state_.folder).append(stringEnd);
    if (!state_.title.empty())
        text += PtyAttach::titleSequence(state_.title);
    return text;
}

std::string TerminalModes::undo() const {
    std::string text(shiftIn);
    const auto csi = [&](const auto&... parts) {
        text += csiStart;
        ((text += parts), ...);
    };
    const bool isOnMain = !isOnAlternateScreen();
    if (isOnMain && !state_.region.empty())
        text.append(esc).append("7").append(noRegion).append(esc).append("8");
    else if (!state_.region.empty())
        text += noRegion;
    if (isOnMain && state_.unusual[indexOf(originInRegion)])
        csi("?6l\033[999H"); // the mode's end has put the cursor at the top
    // Last come the alternate screens, after what is put right on them.
    for (std::size_t i = ControlSequence::modes.size(); i-- > 0;) {
        const ControlSequence::Mode& mode = ControlSequence::modes[i];
        if (state_.unusual[i] && !(isOnMain && mode.number == originInRegion))
            csi("?", std::to_string(mode.number), mode.isUsuallySet ? "h" : "l");
    }
    if (state_.inserts)
        csi("4l");
    if (state_.keyboard.size() > 1)
        csi("<", std::to_string(state_.keyboard.size() - 1), "u"); // `reset` ends the last
    for (const auto& [number, value] : state_.keyModifiers)
        csi(">", std::to_string(number), "m");
    if (!state_.charset.empty())
        text.append(esc).append("(B");
    if (!state_.cursorStyle.empty())
        csi("0 q");
    for (const auto& [what, colour] : state_.colours)
        text.append(esc)
            .append(what.starts_with("4;") ? "]10" : "]1")
            .append(what)
            .append(stringEnd);
    return text;
}

bool TerminalModes::isOnAlternateScreen() const {
    return std::ranges::any_of(
        alternateScreens, [this](std::int32_t number) { return state_.unusual[indexOf(number)]; });
}

bool TerminalModes::reportsFocus() const {
    return state_.unusual[indexOf(ControlSequence::focusReports)];
}

} // namespace velmo
