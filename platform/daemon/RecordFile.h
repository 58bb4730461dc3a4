#pragma once

#include "daemon/RecordStore.h"
#include "platform/posix/Disk.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace velmo {

/// Keeps the record as a file of mode 0600 in a folder of its own, of mode 0700, which must be a
/// real folder of the expected owner before anything is written into it.
class RecordFile final : public RecordStore {
public:
    /// The caller keeps the disk alive as long as the store.
    RecordFile(std::string_view directory, std::string_view name, uid_t expectedOwner,
               Disk& disk = Disk::ofThisMachine())
        : directory_(directory), name_(name), expectedOwner_(expectedOwner), disk_(disk) {}

    std::optional<PowerDaemonRecord> read() override;
    bool write(const PowerDaemonRecord& record) override;
    void remove() override;

private:
    std::string directory_;
    std::string name_;
    uid_t expectedOwner_;
    Disk& disk_;
};

} // namespace velmo
