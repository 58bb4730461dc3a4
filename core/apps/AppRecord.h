#pragma once

#include "core/support/Record.h"

#include <string>

namespace velmo {

/// An installed application. `decodeRecord` reads it back.
struct AppRecord {
    std::string name;     ///< as it is shown
    std::string path;     ///< of the bundle, as it was found
    std::string bundleId; ///< empty when unknown
    std::string version;  ///< empty when unknown

    static constexpr auto fields =
        std::tuple{field("name", &AppRecord::name), field("path", &AppRecord::path),
                   field("bundleId", &AppRecord::bundleId), field("version", &AppRecord::version)};
    bool operator==(const AppRecord&) const = default;
};

} // namespace velmo
