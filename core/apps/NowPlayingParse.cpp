#include "core/apps/NowPlayingParse.h"

#include "core/support/Decimal.h"
#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velmo::NowPlayingParse {

namespace {

constexpr std::string_view missingValue = "missing value";
constexpr double millisecondsPerSecond = 1000;

/// Hyphen, en dash, em dash.
constexpr std::string_view dashes[] = {" - ", " \u2013 ", " \u2014 "};

/// The fields of a line by position.
class Fields {
public:
    explicit Fields(std::string_view line) {
        for (auto end = line.find(separator); end != std::string_view::npos;
             end = line.find(separator)) {
            parts_.push_back(line.substr(0, end));
            line.remove_prefix(end + separator.size());
        }
        parts_.push_back(line);
    }

    [[nodiscard]] std::string_view operator[](std::size_t position) const {
        if (position >= parts_.size())
            return {};
        const std::string_view text = Text::trimmed(parts_[position], Text::isBlankOrNewline);
        return text == missingValue ? std::string_view() : text;
    }

private:
    std::vector<std::string_view> parts_;
};

/// Tells whether the player plays or has paused; absent for any other state.
std::optional<bool> playing(std::string_view state) {
    if (state != "playing" && state != "paused")
        return std::nullopt;
    return state == "playing";
}

std::optional<std::string> unlessEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

std::optional<double> positive(std::string_view text) {
    const auto value = number(text);
    return value && *value > 0 ? value : std::nullopt;
}

bool skipSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    return negative;
}

std::string_view takeDigits(std::string_view& text) {
    const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(digits.size());
    return digits;
}

/// The title, artist and station of a track, with the title of its stream, if it has one, taken
/// into account.
struct Credits {
    std::string_view title;
    std::string_view artist;
    std::string_view station;
};

Credits credits(std::string_view track, std::string_view artist, std::string_view stream) {
    if (stream.empty())
        return {.title = track, .artist = artist, .station = {}};
    Credits chosen{.title = stream, .artist = artist.empty() ? track : artist, .station = {}};
    if (const auto split = splitStreamTitle(stream))
        chosen = {.title = split->title, .artist = split->artist, .station = {}};
    else if (artist.empty() && track == stream)
        chosen.artist = {};
    if (track != chosen.title && track != chosen.artist)
        chosen.station = track;
    return chosen;
}

} // namespace

std::optional<NowPlayingInfo> music(std::string_view line) {
    const Fields fields(line);
    const auto isPlaying = playing(fields[0]);
    const std::string_view stream = fields[6];
    const auto [title, artist, station] = credits(fields[1], fields[2], stream);
    if (!isPlaying || title.empty())
        return std::nullopt;

    NowPlayingInfo info{.title = std::string(title),
                        .artist = std::string(artist),
                        .album = unlessEmpty(fields[3]),
                        .playing = *isPlaying,
                        .app = "Music",
                        .station = unlessEmpty(station)};
    const auto duration = positive(fields[4]);
    info.live = !stream.empty() || (fields[7] == "URL track" && !duration);
    if (!info.live && duration) {
        info.duration = duration;
        info.position = number(fields[5]);
    }
    if (Decimal::parseSigned<std::int64_t>(fields[8]).value_or(0) >= 1) {
        auto& key = info.artworkKey.emplace("music:");
        key.append(fields[9]).append("|").append(title).append("|").append(artist);
    }
    return info;
}

std::optional<NowPlayingInfo> spotify(std::string_view line) {
    const Fields fields(line);
    const auto isPlaying = playing(fields[0]);
    if (!isPlaying || fields[1].empty())
        return std::nullopt;

    NowPlayingInfo info{.title = std::string(fields[1]),
                        .artist = std::string(fields[2]),
                        .album = unlessEmpty(fields[3]),
                        .playing = *isPlaying,
                        .app = "Spotify"};
    if (const auto milliseconds = positive(fields[4])) {
        info.duration = *milliseconds / millisecondsPerSecond;
        info.position = number(fields[5]);
    }
    if (fields[6].starts_with("https://"))
        info.artworkUrl = std::string(fields[6]);
    return info;
}

std::optional<NowPlayingInfo> pick(std::span<const NowPlayingInfo> infos) {
    if (infos.empty())
        return std::nullopt;
    const auto found = std::ranges::find_if(infos, &NowPlayingInfo::playing);
    return found == infos.end() ? infos.front() : *found;
}

std::optional<StreamTitle> splitStreamTitle(std::string_view text) {
    text = Text::trimmed(text, Text::isBlankOrNewline);
    std::size_t first = std::string_view::npos;
    std::size_t length = 0;
    for (const std::string_view dash : dashes) {
        if (const std::size_t found = text.find(dash); found < first) {
            first = found;
            length = dash.size();
        }
    }
    if (first == std::string_view::npos)
        return std::nullopt;
    // Neither side is empty: the text neither begins nor ends with a blank.
    return StreamTitle{.artist = Text::trimmed(text.substr(0, first), Text::isBlank),
                       .title = Text::trimmed(text.substr(first + length), Text::isBlank)};
}

std::optional<double> number(std::string_view text) {
    const std::string point = Text::replacedAll(Text::trimmed(text, Text::isBlank), ",", ".");
    std::string_view rest = point;
    const bool negative = skipSign(rest);
    const std::string_view whole = takeDigits(rest);
    std::string_view fraction;
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        fraction = takeDigits(rest);
    }
    if (whole.empty() && fraction.empty())
        return std::nullopt;
    std::string_view exponent = "0";
    bool small = false;
    if (rest.starts_with('e') || rest.starts_with('E')) {
        rest.remove_prefix(1);
        small = skipSign(rest);
        exponent = takeDigits(rest);
        if (exponent.empty())
            return std::nullopt;
    }
    if (!rest.empty())
        return std::nullopt;

    // Some of our compilers' standard libraries lack std::from_chars for double. The JSON reader
    // knows no locale either and rounds correctly, so the number is spelt as JSON spells a real.
    std::string json = "0";
    if (const std::size_t zeros = whole.find_first_not_of('0'); zeros != std::string_view::npos)
        json = whole.substr(zeros);
    json.append(".").append(fraction).append("0e").append(small ? "-" : "+").append(exponent);
    const auto value = decodeJsonText<double>(json);
    return value && !(negative && *value > 0) ? value : std::nullopt;
}

} // namespace velmo::NowPlayingParse
