#pragma once

#include "core/support/Record.h"

#include <string>
#include <vector>

namespace velmo {

/// A program that may be started on a new pseudo-terminal: everything needed to start it except its
/// environment, which `Pty::childEnvironment` makes.
struct SpawnRequest {
    std::string cwd;               ///< links resolved
    int cols = 0;                  ///< 1...1000
    int rows = 0;                  ///< 1...500
    std::string program;           ///< links resolved
    std::vector<std::string> argv; ///< the program's path as given, then its arguments

    static constexpr auto fields =
        std::tuple{field("cwd", &SpawnRequest::cwd), field("cols", &SpawnRequest::cols),
                   field("rows", &SpawnRequest::rows), field("program", &SpawnRequest::program),
                   field("argv", &SpawnRequest::argv)};
    bool operator==(const SpawnRequest&) const = default;
};

} // namespace velmo
