#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

struct AudioState {
    std::int64_t volume = 0; ///< percent, 0...100
    bool muted = false;
    std::optional<std::string> output; ///< the device's name, where somebody filled it in

    /// The volume is brought into its range.
    static AudioState fromVolume(std::int64_t volume, bool muted);

    /// From the audio layer's 0.0...1.0; halves of a percent, in single precision, go up. Absent
    /// when the volume is not finite.
    static std::optional<AudioState> fromScalar(float scalar, bool muted);

    /// From AppleScript's "output volume" and "output muted"; absent without a volume.
    static std::optional<AudioState> fromAppleScript(std::optional<std::int64_t> volume,
                                                     std::optional<bool> muted);

    static constexpr auto fields =
        std::tuple{field("volume", &AudioState::volume), field("muted", &AudioState::muted),
                   field("output", &AudioState::output)};
    bool operator==(const AudioState&) const = default;
};

} // namespace velmo
