#pragma once

#include "core/support/Uri.h"

#include <uriparser/Uri.h>

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Tells whether another parser agrees with ours: both refuse the text, or both accept it and find
/// the same parts.
inline bool agreesWithAPeer(const std::string& text) {
    const auto uri = Uri::parse(text);
    UriUriA peer;
    const char* errorAt = nullptr;
    if (uriParseSingleUriExA(&peer, text.data(), text.data() + text.size(), &errorAt)
        != URI_SUCCESS)
        return !uri;
    const auto part = [](const UriTextRangeA& range) {
        return range.first == nullptr
                   ? std::nullopt
                   : std::optional(std::string_view(range.first, range.afterLast));
    };
    std::string path;
    for (const UriPathSegmentA* segment = peer.pathHead; segment != nullptr;
         segment = segment->next)
        path.append("/").append(part(segment->text).value());
    std::optional<Uri> expected;
    if (const auto scheme = part(peer.scheme), host = part(peer.hostText); scheme && host)
        expected = {.scheme = *scheme,
                    .userInfo = part(peer.userInfo),
                    .host = *host,
                    .port = part(peer.portText),
                    .path = path,
                    .query = part(peer.query),
                    .fragment = part(peer.fragment)};
    const bool same = uri == expected;
    uriFreeUriMembersA(&peer);
    return same;
}

} // namespace velmo
