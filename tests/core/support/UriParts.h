#pragma once

#include "core/support/Uri.h"

#include <uriparser/Uri.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Every part in the order of the text; none for what is no address with an authority.
using UriParts = std::vector<std::optional<std::string>>;

inline UriParts uriParts(const std::string& text) {
    const auto uri = Uri::parse(text);
    if (!uri)
        return {};
    const auto copy = [](const std::optional<std::string_view>& part) {
        return part ? std::optional(std::string(*part)) : std::nullopt;
    };
    return {copy(uri->scheme), copy(uri->userInfo), copy(uri->host),    copy(uri->port),
            copy(uri->path),   copy(uri->query),    copy(uri->fragment)};
}

inline std::optional<std::string> copyOf(const UriTextRangeA& range) {
    if (range.first == nullptr)
        return std::nullopt;
    return std::string(range.first, range.afterLast);
}

/// The same as another parser sees it.
inline UriParts peerUriParts(const std::string& text) {
    UriUriA uri;
    const char* errorAt = nullptr;
    if (uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), &errorAt) != URI_SUCCESS)
        return {};
    UriParts result;
    if (uri.scheme.first != nullptr && uri.hostText.first != nullptr) {
        std::string path;
        for (const UriPathSegmentA* segment = uri.pathHead; segment != nullptr;
             segment = segment->next)
            path += "/" + copyOf(segment->text).value();
        result = {copyOf(uri.scheme),
                  copyOf(uri.userInfo),
                  copyOf(uri.hostText),
                  copyOf(uri.portText),
                  path,
                  copyOf(uri.query),
                  copyOf(uri.fragment)};
    }
    uriFreeUriMembersA(&uri);
    return result;
}

} // namespace velmo
