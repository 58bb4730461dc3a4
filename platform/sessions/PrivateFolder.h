#pragma once

#include "platform/posix/Descriptor.h"
#include "sessions/TicketStore.h"

#include <sys/types.h>

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// The folder that only its user may enter, with the session host's sockets, tickets, lock and log.
/// Files are reached through the folder's descriptor, and links are never followed.
class PrivateFolder final : public TicketStore {
public:
    static constexpr const char* controlSocket = "control.sock";
    static constexpr const char* lockFile = "host.lock";
    static constexpr const char* logFile = "host.log";

    static constexpr pid_t noLock = -1;

    /// Returns the folder's path, whether or not it exists: "velmo-term" in
    /// `PtyAttach::HostFileSystem::userTempDir`. Absent if the system gives no such folder.
    static std::optional<std::string> locate();

    /// Opens the folder, or makes it and what is missing above it. The error says what is wrong
    /// with the folder.
    static std::expected<PrivateFolder, std::string> make();

    [[nodiscard]] std::string folder() const override { return path_; }

    [[nodiscard]] bool write(const std::string& name, std::string_view content) override;
    [[nodiscard]] bool link(const std::string& name, const std::string& target) override;
    void remove(const std::string& name) override;

    /// Takes the right to serve, which lasts until the descriptor is closed. The error is the
    /// process id of the host that has this right, 0 if that is unknown, or `noLock` if the lock
    /// can't be made.
    [[nodiscard]] std::expected<Descriptor, pid_t> lock() const;

    /// Tells whether the path still leads to the folder that was opened, and this right is still
    /// the one that its lock gives: no other process can take the right to serve there meanwhile.
    [[nodiscard]] bool isServedBy(const Descriptor& right) const;

    /// Removes the tickets and the links to SSH agents that an earlier host may have left.
    void removeTickets() const;

    /// Opens the log for appending.
    [[nodiscard]] Descriptor openLog() const;

    /// Marks the folder, its lock, log and sockets as in use, since some systems remove files that
    /// have not been touched for days.
    void touch() const;

    /// Tells whether the file still exists, and the path still leads to the folder that was opened.
    [[nodiscard]] bool has(const std::string& name) const;

    [[nodiscard]] std::string path(std::string_view name) const;

private:
    PrivateFolder(std::string path, Descriptor descriptor)
        : path_(std::move(path)), descriptor_(std::move(descriptor)) {}

    std::string path_;
    Descriptor descriptor_;
};

} // namespace velmo
