#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/simulated/SimulatedMac.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace velmo {

/// Gives access to a simulated Mac's folder:
///
///     machine.json            its state (`SimulatedMac`)
///     usr/bin/pmset           the program that changes and prints the sleep setting
///     var/db/velmo/           the daemon's record
///     var/run/                the socket in place of the Mach service; a sign while pmset hangs
class MacFolder {
public:
    explicit MacFolder(const std::filesystem::path& absolutePath);

    /// Returns the Mac in the folder of this name, whether or not the folder contains one. Returns
    /// the reason, for people, if the name is empty, if it is relative and the current folder is
    /// gone, or if it is too long for a socket in the folder.
    static std::expected<MacFolder, std::string> named(const std::string& name);

    /// Makes the folder, with a Mac on mains power that trusts the current user and a link to
    /// `pmset` in the place of that program. Returns false if something could not be written.
    [[nodiscard]] bool create(const std::filesystem::path& pmset) const;

    /// Reads the state; absent if the machine file is missing or not in order.
    [[nodiscard]] std::optional<SimulatedMac> load() const;

    /// Returns, for people, why the state can't be read and what to do about it.
    [[nodiscard]] std::string complaint() const;

    /// Tells whether the machine file exists, in order or not.
    [[nodiscard]] bool exists() const;

    /// Returns the right to be this Mac's daemon, which lasts as long as the descriptor is open.
    /// Waits about a second for another process to give the right up, and returns
    /// `std::errc::operation_would_block` if it does not. On a real Mac launchd starts one daemon
    /// only.
    [[nodiscard]] std::expected<Descriptor, std::error_code> serve() const;

    /// Tells whether the right is still one to this Mac. The folder may have been removed since,
    /// and another Mac made in its place.
    [[nodiscard]] bool isServedBy(const Descriptor& right) const;

    /// Changes the state, while other processes wait to do so. Returns false if the file could not
    /// be read or written.
    bool update(const std::function<void(SimulatedMac&)>& change) const;

    [[nodiscard]] std::filesystem::path pmset() const { return root_ / "usr/bin/pmset"; }

    /// Returns the path of a file that is there while a pmset hangs.
    [[nodiscard]] std::filesystem::path signOfHungPmset() const {
        return root_ / "var/run/pmset.hangs";
    }

    /// Returns the path of the socket in place of a Mach service. The file is named after the last
    /// part of the service's name.
    [[nodiscard]] std::filesystem::path socket(std::string_view service) const;

    /// Returns where an absolute path of a Mac lies in the folder.
    [[nodiscard]] std::filesystem::path inside(std::string_view absolutePath) const;

    [[nodiscard]] const std::filesystem::path& root() const { return root_; }

private:
    [[nodiscard]] std::filesystem::path daemonLock() const;

    std::filesystem::path root_;
};

} // namespace velmo
