#pragma once

#include "core/support/Bytes.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// An HTTP request and its reply, as far as the bridge decides about them.
namespace velmo {

struct HttpRequest {
    std::string_view method;
    std::string_view target;                ///< the path, and the query if it has one
    std::string_view host;                  ///< "" without the header, and if there are several
    std::optional<std::string_view> origin; ///< "" if there are several
    std::string_view cookie;                ///< "" without the header, and if there are several
    std::string_view contentType;
    std::string_view ifNoneMatch; ///< the tag of the file that the browser has already
    std::string_view body;
};

struct HttpReply {
    unsigned status = 200;
    std::string_view contentType = "text/plain; charset=utf-8";
    std::string text{};
    ByteView gzipped{};      ///< in place of the text: a file that is compressed by gzip
    std::string_view tag{};  ///< of the file; empty: the reply may not be kept
    std::string setCookie{}; ///< the value of the header; empty: no such header
};

/// A file of the page. The program contains all of them.
struct PageFile {
    std::string_view path; ///< "/" for the page itself
    std::string_view contentType;
    ByteView gzipped;
    std::string_view tag; ///< in quotes, as in an "ETag" header; changes with the content
};

struct HttpHeader {
    std::string_view name;
    std::string_view value;
};

/// The headers of every reply. The page runs no script but its own files, talks to nothing but this
/// bridge, and can't be shown inside another page. Inline styles are allowed because xterm.js needs
/// them: it makes style elements for its theme and for the size of its letters, and style
/// attributes for colours beyond the first 16. A script can't be hidden in a style.
inline constexpr auto replyHeaders = std::to_array<HttpHeader>({
    {.name = "Content-Security-Policy",
     .value = "default-src 'none'; script-src 'self'; style-src 'self' 'unsafe-inline'; "
              "img-src 'self'; connect-src 'self'; "
              "manifest-src 'self'; worker-src 'self'; base-uri 'none'; form-action 'none'; "
              "frame-ancestors 'none'; require-trusted-types-for 'script'"},
    {.name = "X-Content-Type-Options", .value = "nosniff"},
    {.name = "X-Frame-Options", .value = "DENY"},
    {.name = "Referrer-Policy", .value = "no-referrer"},
    {.name = "Cross-Origin-Opener-Policy", .value = "same-origin"},
    {.name = "Cross-Origin-Resource-Policy", .value = "same-origin"},
});

} // namespace velmo
