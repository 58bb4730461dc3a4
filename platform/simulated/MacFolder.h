#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/simulated/SimulatedMac.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace velmo {

/// Gives access to a simulated Mac's folder:
///
///     machine.json            its state (`SimulatedMac`)
///     usr/bin/pmset           the program that changes and prints the sleep setting
///     var/db/velmo/           the daemon's record
///     var/run/                the socket in place of the Mach service; a sign while pmset hangs
class MacFolder {
public:
    explicit MacFolder(const std::filesystem::path& root);

    /// Makes the folder, with a Mac on mains power that trusts the current user and a link to
    /// `pmset` in the place of that program. Returns false if something could not be written.
    [[nodiscard]] bool create(const std::filesystem::path& pmset) const;

    /// Reads the state; absent if the machine file is missing or not in order.
    [[nodiscard]] std::optional<SimulatedMac> load() const;

    /// Tells whether there is a machine file, in order or not.
    [[nodiscard]] bool exists() const;

    /// Returns the right to be this Mac's daemon, which lasts as long as the descriptor is open, or
    /// an empty descriptor while another process has it. On a real Mac launchd starts one daemon
    /// only.
    [[nodiscard]] Descriptor serve() const;

    /// Changes the state, while other processes wait to do so. Returns false if the file could not
    /// be read or written.
    bool update(const std::function<void(SimulatedMac&)>& change) const;

    [[nodiscard]] std::filesystem::path pmset() const { return root_ / "usr/bin/pmset"; }

    /// Returns the path of a file that is there while a pmset hangs.
    [[nodiscard]] std::filesystem::path signOfHungPmset() const {
        return root_ / "var/run/pmset.hangs";
    }

    [[nodiscard]] std::filesystem::path socket(std::string_view service) const;

    /// Returns where an absolute path of a Mac lies in the folder.
    [[nodiscard]] std::filesystem::path inside(std::string_view absolutePath) const;

    [[nodiscard]] const std::filesystem::path& root() const { return root_; }

private:
    std::filesystem::path root_;
};

} // namespace velmo
