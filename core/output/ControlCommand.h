#pragma once

#include "core/support/RawText.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// A command to the machine as a whole: sound, brightness, media keys, power.
struct ControlCommand {
    /// The raw texts are the command words.
    enum class Kind {
        volumeSet,
        brightnessSet,
        volumeUp,
        volumeDown,
        muteToggle,
        mediaPlayPause,
        mediaNext,
        mediaPrevious,
        mediaStop,
        lock,
        sleep,
        shutdown,
        restart,
    };

    Kind kind = Kind::volumeSet;
    std::int64_t percent = 0; ///< 0...100; 0 for every command but volumeSet and brightnessSet

    /// Reads the words after the program's own name: a command word, exactly as it is written, and,
    /// for the two that set something, one percentage. The percentage may have one sign and leading
    /// zeros; "-0" is 0. Absent for anything else, such as a word too many, even an empty one.
    static std::optional<ControlCommand> parse(std::span<const std::string> args);

    /// Setting, raising and lowering the volume switch the sound on; toggling mute does not.
    [[nodiscard]] bool unmutesFirst() const;

    /// The AppleScript that carries out a volume command; absent for every other command. A
    /// percentage beyond 100 is written as it is.
    [[nodiscard]] std::optional<std::string> volumeScript() const;

    bool operator==(const ControlCommand&) const = default;
};

template<>
inline constexpr auto rawTexts<ControlCommand::Kind> = std::to_array<std::string_view>(
    {"volume-set", "brightness-set", "volume-up", "volume-down", "mute-toggle", "media-play-pause",
     "media-next", "media-previous", "media-stop", "lock", "sleep", "shutdown", "restart"});

} // namespace velmo
