#include "core/apps/AudioState.h"

#include <algorithm>
#include <cmath>

namespace velmo {

namespace {

constexpr std::int64_t maxVolume = 100; ///< percent

} // namespace

AudioState AudioState::fromVolume(std::int64_t volume, bool muted) {
    return {.volume = std::clamp(volume, std::int64_t{0}, maxVolume), .muted = muted};
}

std::optional<AudioState> AudioState::fromScalar(float scalar, bool muted) {
    if (!std::isfinite(scalar))
        return std::nullopt;
    // In double precision the float 0.145 would become 14 instead of 15.
    const float percent = std::round(std::clamp(scalar, 0.0F, 1.0F) * 100.0F);
    return fromVolume(static_cast<std::int64_t>(percent), muted);
}

std::optional<AudioState> AudioState::fromAppleScript(std::optional<std::int64_t> volume,
                                                      std::optional<bool> muted) {
    return volume.transform(
        [&](std::int64_t value) { return fromVolume(value, muted.value_or(false)); });
}

} // namespace velmo
