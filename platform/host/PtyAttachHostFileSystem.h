#pragma once

#include "core/terminal/AttachTicket.h"

namespace velmo::PtyAttach {

/// Does the ticket reader's file operations on the real system. The temporary folder that is the
/// user's alone comes from confstr(_CS_DARWIN_USER_TEMP_DIR); on systems without that call it is
/// the one that XDG_RUNTIME_DIR names, else /run/user/UID, and ".velmo" in the home folder if
/// neither belongs to the user alone.
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
