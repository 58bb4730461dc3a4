#include "core/apps/NowPlayingParse.h"
#include "fuzz/Fuzz.h"

#include <cmath>

namespace velmo::Fuzz {

namespace {

using namespace NowPlayingParse;

void requireSeconds(const std::optional<double>& seconds) {
    require(!seconds || (*seconds >= 0 && std::isfinite(*seconds)));
}

void requireLimits(const NowPlayingInfo& info) {
    require(!info.title.empty() && info.album != "" && info.station != "");
    require(!info.live || (!info.duration && !info.position));
    require(!info.position || info.duration);
    require(!info.artworkUrl || info.artworkUrl->starts_with("https://"));
    requireSeconds(info.duration);
    requireSeconds(info.position);
    require(JsonDocument::parse(encodeJson(info).value()).has_value());
}

void checkNowPlayingLines(Input input) {
    const std::string_view line = input.rest();
    requireSeconds(number(line));
    if (const auto split = splitStreamTitle(line))
        require(!split->artist.empty() && !split->title.empty());
    const auto fromMusic = music(line);
    const auto fromSpotify = spotify(line);
    if (fromMusic)
        requireLimits(*fromMusic);
    if (fromSpotify)
        requireLimits(*fromSpotify);
    // Both accept a line in which the track has a title. Only Music accepts a line without it, if
    // the stream has a title.
    require(!fromSpotify || fromMusic);
}

const Target nowPlayingLinesTarget("NowPlayingLines", checkNowPlayingLines);

} // namespace

} // namespace velmo::Fuzz
