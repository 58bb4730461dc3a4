#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// How loud the Mac plays.
struct AudioState {
    std::int64_t volume = 0; ///< percent, 0...100
    bool muted = false;
    std::optional<std::string> output; ///< the device's name; absent unless the caller fills it in

    /// Makes a state of a volume in percent, which is clamped to 0...100.
    static AudioState fromVolume(std::int64_t volume, bool muted);

    /// Makes a state of the audio layer's volume, which is clamped to 0.0...1.0 and rounded to
    /// whole percents, a half up, in single precision as the audio layer itself computes. Absent if
    /// the volume is not finite.
    static std::optional<AudioState> fromScalar(float scalar, bool muted);

    /// Makes a state of AppleScript's "output volume", in percent, and "output muted". Absent
    /// without a volume, which some devices lack; without "muted" the sound is on.
    static std::optional<AudioState> fromAppleScript(std::optional<std::int64_t> volume,
                                                     std::optional<bool> muted);

    static constexpr auto fields =
        std::tuple{field("volume", &AudioState::volume), field("muted", &AudioState::muted),
                   field("output", &AudioState::output)};
    bool operator==(const AudioState&) const = default;
};

} // namespace velmo
