#pragma once

#include "core/support/Record.h"

#include <string>

namespace velmo {

/// An installed application, as the list shows it.
struct AppRecord {
    std::string name;     ///< the name that people see
    std::string path;     ///< of the bundle, below the folder as it was given to the scan
    std::string bundleId; ///< empty when unknown
    std::string version;  ///< empty when unknown

    static constexpr auto fields =
        std::tuple{field("name", &AppRecord::name), field("path", &AppRecord::path),
                   field("bundleId", &AppRecord::bundleId), field("version", &AppRecord::version)};
    bool operator==(const AppRecord&) const = default;
};

} // namespace velmo
