#pragma once

#include "core/support/Bytes.h"

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
    std::string_view body;
};

struct HttpReply {
    unsigned status = 200;
    std::string_view contentType = "text/plain; charset=utf-8";
    std::string text{};
    ByteView gzipped{};      ///< in place of the text: a file that is compressed by gzip
    std::string setCookie{}; ///< the value of the header; empty: no such header
};

/// A file of the page. The program contains all of them.
struct PageFile {
    std::string_view path; ///< "/" for the page itself
    std::string_view contentType;
    ByteView gzipped;
};

} // namespace velmo
