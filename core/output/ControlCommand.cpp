#include "core/output/ControlCommand.h"

#include "core/support/Ascii.h"

namespace velmo {

namespace {

constexpr std::int64_t highestPercent = 100;

bool takesPercent(ControlCommand::Kind kind) {
    return kind == ControlCommand::Kind::volumeSet || kind == ControlCommand::Kind::brightnessSet;
}

std::optional<std::int64_t> percentage(std::string_view word) {
    const auto percent = Ascii::signedDecimal<std::int64_t>(word);
    return percent && *percent >= 0 && *percent <= highestPercent ? percent : std::nullopt;
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

} // namespace velmo
