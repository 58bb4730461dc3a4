#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>

namespace velmo {

/// What a player plays.
struct NowPlayingInfo {
    std::string title;
    std::string artist; ///< may be empty
    std::optional<std::string> album;
    bool playing = false; ///< false: paused
    std::string app;      ///< "Music" or "Spotify"
    bool live = false;    ///< a stream, which has no progress
    std::optional<std::string> station;
    std::optional<double> duration;        ///< seconds
    std::optional<double> position;        ///< seconds
    std::optional<std::string> artworkUrl; ///< "https://..."
    std::optional<std::string> artworkKey; ///< names artwork that only the player has

    static constexpr auto fields = std::tuple{
        field("title", &NowPlayingInfo::title),
        field("artist", &NowPlayingInfo::artist),
        field("album", &NowPlayingInfo::album),
        field("playing", &NowPlayingInfo::playing),
        field("app", &NowPlayingInfo::app),
        field("live", &NowPlayingInfo::live),
        field("station", &NowPlayingInfo::station),
        field("duration", &NowPlayingInfo::duration),
        field("position", &NowPlayingInfo::position),
        field("artworkUrl", &NowPlayingInfo::artworkUrl),
        field("artworkKey", &NowPlayingInfo::artworkKey),
    };
    bool operator==(const NowPlayingInfo&) const = default;
};

/// Told instead when the user has not permitted that this player be automated.
struct NowPlayingPermission {
    std::string permission = "automation";
    std::string app;

    static NowPlayingPermission of(std::string app) { return {.app = std::move(app)}; }

    static constexpr auto fields =
        std::tuple{field("permission", &NowPlayingPermission::permission),
                   field("app", &NowPlayingPermission::app)};
    bool operator==(const NowPlayingPermission&) const = default;
};

} // namespace velmo
