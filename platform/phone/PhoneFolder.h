#pragma once

#include "phone/PhoneRecord.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Folder.h"

#include <expected>
#include <optional>
#include <string>

namespace velmo {

/// The bridge's state folder, which only its user may enter: the record, the socket for commands,
/// and the lock of the bridge that serves.
class PhoneFolder {
public:
    static constexpr const char* recordFile = "phone.json";
    static constexpr const char* lockFile = "phone.lock";
    static constexpr const char* commandSocket = "phone.sock";

    /// Opens the folder, or makes it. The error says what is wrong with it.
    static std::expected<PhoneFolder, std::string> make();

    /// Returns the path of the socket for commands; absent if the system knows no home folder.
    static std::optional<std::string> commandSocketPath();

    /// Takes the right to serve, which lasts until the descriptor is closed. The error says that
    /// another bridge has this right, or what is wrong with the lock.
    [[nodiscard]] std::expected<Descriptor, std::string> lock() const;

    /// Returns the record of the last run, or an empty record before the first run. Absent if the
    /// file can't be decoded.
    [[nodiscard]] std::optional<PhoneRecord> read() const;

    /// Tells whether the record was written.
    [[nodiscard]] bool write(const PhoneRecord& record) const;

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    PhoneFolder(std::string path, Folder folder)
        : path_(std::move(path)), folder_(std::move(folder)) {}

    std::string path_;
    Folder folder_;
};

} // namespace velmo
