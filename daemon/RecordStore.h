#pragma once

#include "core/power/HoldReport.h"
#include "core/power/PowerDaemonRecord.h"

#include <optional>
#include <string_view>

namespace velmo {

/// The file beside the record that says how the last hold ended.
inline constexpr std::string_view lastHoldEndName = "power-daemon-last.json";

/// Keeps the one fact that the daemon must not forget, and a note for people. The guard calls it on
/// its queue only.
class RecordStore {
public:
    virtual ~RecordStore() = default;

    /// Reads the record; absent if it is missing or can't be read or decoded.
    virtual std::optional<PowerDaemonRecord> read() = 0;

    /// Replaces the record. Returns true only once the whole record is on disk, where it survives a
    /// crash and a power cut; otherwise the previous state of the disk remains. A file that can't
    /// be read is not overwritten, because it may be the only trace of the previous setting. A file
    /// that can be read but not decoded is overwritten.
    virtual bool write(const PowerDaemonRecord& record) = 0;

    /// Removes the record. Errors are ignored: the guard's tick tries again while a record remains.
    virtual void remove() = 0;

    /// Tells whether a record exists that can't be read or decoded.
    virtual bool isUnreadable() = 0;

    // How the last hold ended. Nothing depends on it.

    /// Reads the end; absent if it is missing or can't be read or decoded.
    virtual std::optional<HoldEnd> readLastEnd() = 0;

    /// Replaces the end. An error is ignored.
    virtual void writeLastEnd(const HoldEnd& end) = 0;
};

} // namespace velmo
