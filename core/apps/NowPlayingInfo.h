#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>

namespace velmo {

/// The track or stream that a music player is playing or has paused.
struct NowPlayingInfo {
    std::string title;  ///< not empty in what a parser returns
    std::string artist; ///< may be empty
    std::optional<std::string> album;
    bool playing = false;                  ///< false if paused
    std::string app;                       ///< "Music" or "Spotify"
    bool live = false;                     ///< a stream, which has neither duration nor position
    std::optional<std::string> station;    ///< the sender of a stream
    std::optional<double> duration;        ///< seconds
    std::optional<double> position;        ///< seconds from the start
    std::optional<std::string> artworkUrl; ///< an "https://" address (Spotify)
    std::optional<std::string>
        artworkKey; ///< differs for different artwork, which Music itself must be asked for

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

/// Sent in place of `NowPlayingInfo` if the user has not permitted the host to automate the player.
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
