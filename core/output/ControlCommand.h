#pragma once

#include "core/support/RawText.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// A command to the Mac as a whole, about its sound, brightness, media keys or power.
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

    /// Reads the words after the program's own name: a command word, in the letter case of its raw
    /// text, and a percentage for `volumeSet` and `brightnessSet`. The percentage may have one sign
    /// and leading zeros; "-0" is 0. Absent if any further word follows, even an empty one.
    static std::optional<ControlCommand> parse(std::span<const std::string> args);

    /// Tells whether the command switches the sound on before it changes the volume.
    [[nodiscard]] bool unmutesFirst() const;

    /// Returns the AppleScript that carries out a command about sound; absent for any other
    /// command. The percentage is not checked here.
    [[nodiscard]] std::optional<std::string> volumeScript() const;

    bool operator==(const ControlCommand&) const = default;
};

template<>
inline constexpr auto rawTexts<ControlCommand::Kind> = std::to_array<std::string_view>(
    {"volume-set", "brightness-set", "volume-up", "volume-down", "mute-toggle", "media-play-pause",
     "media-next", "media-previous", "media-stop", "lock", "sleep", "shutdown", "restart"});

} // namespace velmo
