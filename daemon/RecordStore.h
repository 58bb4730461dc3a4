#pragma once

#include "core/power/HoldReport.h"
#include "core/power/PowerDaemonRecord.h"

#include <optional>
#include <string_view>

namespace velmo {

/// In `powerRecordDirectory`: the record of a hold in force, and how the last hold ended.
inline constexpr std::string_view powerRecordName = "power-daemon.json";
inline constexpr std::string_view lastHoldEndName = "power-daemon-last.json";

/// Keeps the daemon's one persistent fact, and a note for people. Called on the guard's queue only.
class RecordStore {
public:
    virtual ~RecordStore() = default;

    /// Reads the record; absent if there is none or it can't be read or decoded.
    virtual std::optional<PowerDaemonRecord> read() = 0;

    /// Replaces the record. Returns true only if it is on disk, whole, to survive a crash and a
    /// power cut; otherwise the previous record, or none, is as it was. A file that is there but
    /// can't be read is not written over: it may be the only word of what the setting was. (One
    /// that can be read and makes no sense is.)
    virtual bool write(const PowerDaemonRecord& record) = 0;

    /// Removes the record. Errors are ignored: the guard's tick tries again while one stays.
    virtual void remove() = 0;

    /// Tells whether there is a record that can't be read or decoded.
    virtual bool isUnreadable() = 0;

    // How the last hold ended. Nothing depends on it.

    /// Reads it; absent if there is none or it can't be read or decoded.
    virtual std::optional<HoldEnd> readLastEnd() = 0;

    /// Replaces it if that can be done.
    virtual void writeLastEnd(const HoldEnd& end) = 0;
};

} // namespace velmo
