#pragma once

#include "core/terminal/AttachTicket.h"

namespace velmo::PtyAttach {

/// Does the ticket reader's file operations on the real system. The temporary folder that is the
/// user's alone comes from confstr(_CS_DARWIN_USER_TEMP_DIR). Systems without that call have
/// ".velmo" in the home folder that HOME names, or else the user database; it may not exist yet.
class HostFileSystem : public FileSystem {
public:
    [[nodiscard]] std::uint32_t uid() override;
    [[nodiscard]] std::optional<std::string> userTempDir() override;
    [[nodiscard]] std::optional<std::string> realpath(std::string_view path) override;
    [[nodiscard]] std::expected<int, OpenError> openDirectory(std::string_view path) override;
    [[nodiscard]] std::expected<int, OpenError> open(std::string_view name, int directory) override;
    [[nodiscard]] std::optional<FileInfo> fstat(int descriptor) override;
    [[nodiscard]] std::optional<std::string> pathOf(int descriptor) override;
    [[nodiscard]] std::optional<Bytes> read(int descriptor, std::size_t max) override;
    void close(int descriptor) override;
    [[nodiscard]] bool unlink(std::string_view name, int directory) override;
};

} // namespace velmo::PtyAttach
