#pragma once

#include "core/apps/NowPlayingInfo.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// The lines that two players' scripts print: fields between separators, trimmed, where a missing
/// field, an empty one and "missing value" are the same. Text is taken as it is, whatever its
/// encoding.
namespace velmo::NowPlayingParse {

inline constexpr std::string_view separator = "\x1F";

/// The system's error number for an event that the user has not permitted.
inline constexpr std::int64_t automationDenied = -1743;

/// State ("playing" or "paused"), name, artist, album, duration and position in seconds, title of
/// the current stream, kind, number of artworks, track identifier. Absent for another state and
/// where nothing gives a title. A stream title makes it live, as does the kind "URL track" without
/// a duration; then there is neither duration nor position.
std::optional<NowPlayingInfo> music(std::string_view line);

/// State, title, artist, album, duration in milliseconds, position in seconds, artwork address.
/// Absent for another state and without a title.
std::optional<NowPlayingInfo> spotify(std::string_view line);

/// The first that is playing, else the first.
std::optional<NowPlayingInfo> pick(std::span<const NowPlayingInfo> infos);

/// Views into the text.
struct StreamTitle {
    std::string_view artist;
    std::string_view title;

    bool operator==(const StreamTitle&) const = default;
};

/// Parts "Artist - Title" at the first dash, of any of three lengths, between two spaces.
std::optional<StreamTitle> splitStreamTitle(std::string_view text);

/// A decimal number, 0 or more, with at most one decimal point or comma and perhaps a sign and an
/// exponent; blanks around it are skipped, line ends are not. Absent too when it is too large; one
/// that is too small is 0.
std::optional<double> number(std::string_view text);

constexpr bool isAutomationDenied(std::optional<std::int64_t> code) {
    return code == automationDenied;
}

} // namespace velmo::NowPlayingParse
