#pragma once

#include "core/apps/NowPlayingInfo.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// Reads the line that a script prints for a music player: fields between separators. White space
/// and newlines around a field are ignored. A field that is missing, empty or "missing value",
/// which is how AppleScript writes an absent value, counts as absent. Texts are not checked to be
/// UTF-8.
namespace velmo::NowPlayingParse {

inline constexpr std::string_view separator = "\x1F";

/// errAEEventNotPermitted (MacErrors.h): the user has not permitted this Apple event.
inline constexpr std::int64_t automationDenied = -1743;

/// Reads the line of Music. The fields are the state, the name of the track, artist, album,
/// duration and position in seconds, the title of the current stream, the kind of track, the number
/// of artworks, and an identifier of the track.
///
/// Absent if the state is neither "playing" nor "paused", or if the title is absent. The track is
/// live if it has a stream title, or if its kind is "URL track" and it has no duration. A stream
/// title of the form "Artist - Title" replaces artist and title; the track's name is then the
/// station.
std::optional<NowPlayingInfo> music(std::string_view line);

/// Reads the line of Spotify. The fields are the state, title, artist, album, duration in
/// milliseconds, position in seconds, and the address of the artwork. Absent if the state is
/// neither "playing" nor "paused", or if the title is absent.
std::optional<NowPlayingInfo> spotify(std::string_view line);

/// Returns the first entry that is playing, or the first of all if every player has paused; absent
/// for an empty list.
std::optional<NowPlayingInfo> pick(std::span<const NowPlayingInfo> infos);

/// Artist and title; views into the text that was split.
struct StreamTitle {
    std::string_view artist;
    std::string_view title;

    bool operator==(const StreamTitle&) const = default;
};

/// Splits "Artist - Title" at the first hyphen, en dash or em dash that has a space on either side.
/// Absent without such a dash, or if nothing stands before or after it.
std::optional<StreamTitle> splitStreamTitle(std::string_view text);

/// Reads a decimal number of 0 or more, with perhaps a sign, an exponent and either a decimal point
/// or a decimal comma. Blanks around the number are ignored, newlines are not. A number that is too
/// large for a double is absent; one that is too small is 0.
std::optional<double> number(std::string_view text);

/// Tells whether a script's error number is `automationDenied`.
constexpr bool isAutomationDenied(std::optional<std::int64_t> code) {
    return code == automationDenied;
}

} // namespace velmo::NowPlayingParse
