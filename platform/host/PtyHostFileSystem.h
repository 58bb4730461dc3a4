#pragma once

#include "core/terminal/Pty.h"

namespace velmo::Pty {

/// Answers the spawn policy's questions from the real disk and user database.
class HostFileSystem final : public FileSystem {
public:
    [[nodiscard]] std::optional<std::string> realpath(std::string_view path) const override;
    [[nodiscard]] bool isDirectory(std::string_view path) const override;
    [[nodiscard]] bool isExecutable(std::string_view path) const override;
    [[nodiscard]] bool isWorldWritable(std::string_view path) const override;
    [[nodiscard]] std::optional<std::string> home(const Environment& environment) const override;
};

// The same two tests for callers without a `FileSystem`.
bool isExecutableFile(std::string_view path);
bool isDirectory(std::string_view path);

} // namespace velmo::Pty
