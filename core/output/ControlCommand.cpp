#include "core/output/ControlCommand.h"

#include "core/support/Decimal.h"

namespace velmo {

namespace {

constexpr std::int64_t maxPercent = 100;

constexpr std::string_view unmute = "try\nset volume output muted false\nend try\n";
constexpr std::string_view setVolume = "set volume output volume ";
// A step is 6 on AppleScript's scale of 0 to 100.
constexpr std::string_view raised = "((output volume of (get volume settings)) + 6)";
constexpr std::string_view lowered = "((output volume of (get volume settings)) - 6)";
constexpr std::string_view toggleMute =
    "set volume output muted (not (output muted of (get volume settings)))";

std::string unmuteAndSetVolume(std::string_view volume) {
    return std::string(unmute).append(setVolume).append(volume);
}

bool takesPercent(ControlCommand::Kind kind) {
    return kind == ControlCommand::Kind::volumeSet || kind == ControlCommand::Kind::brightnessSet;
}

std::optional<std::int64_t> percentage(std::string_view word) {
    return Decimal::parseSigned<std::int64_t>(word, {.min = 0, .max = maxPercent});
}

} // namespace

std::optional<ControlCommand> ControlCommand::parse(std::span<const std::string> args) {
    const auto kind = args.empty() ? std::nullopt : fromRawText<Kind>(args.front());
    if (!kind)
        return std::nullopt;
    const auto rest = args.subspan(1);
    if (takesPercent(*kind)) {
        const auto percent = rest.size() == 1 ? percentage(rest.front()) : std::nullopt;
        return percent.transform(
            [&](std::int64_t value) { return ControlCommand{.kind = *kind, .percent = value}; });
    }
    if (!rest.empty())
        return std::nullopt;
    return ControlCommand{.kind = *kind};
}

bool ControlCommand::unmutesFirst() const {
    return kind == Kind::volumeSet || kind == Kind::volumeUp || kind == Kind::volumeDown;
}

std::optional<std::string> ControlCommand::volumeScript() const {
    if (kind == Kind::muteToggle)
        return std::string(toggleMute);
    if (!unmutesFirst())
        return std::nullopt;
    if (kind == Kind::volumeSet)
        return unmuteAndSetVolume(std::to_string(percent));
    return unmuteAndSetVolume(kind == Kind::volumeUp ? raised : lowered);
}

} // namespace velmo
