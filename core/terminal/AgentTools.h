#pragma once

#include <array>
#include <string_view>

namespace velmo {

/// The coding agents that a session or a terminal window may run, by the names of their programs.
inline constexpr auto agentTools =
    std::to_array<std::string_view>({"claude", "codex", "opencode", "agy"});

} // namespace velmo
