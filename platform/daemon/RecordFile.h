#pragma once

#include "daemon/RecordStore.h"
#include "platform/posix/Disk.h"
#include "platform/posix/Folder.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Keeps the record and the end of the last hold as files of mode 0600, in a folder of their own of
/// mode 0700. Writes nothing unless the folder is a real one, not a link, of the expected owner.
class RecordFile final : public RecordStore {
public:
    /// The caller keeps the disk alive as long as the store.
    RecordFile(std::string_view directory, std::string_view name, uid_t expectedOwner,
               Disk& disk = Disk::ofThisMachine())
        : directory_(directory), name_(name), expectedOwner_(expectedOwner), disk_(disk) {}

    std::optional<PowerDaemonRecord> read() override;
    bool write(const PowerDaemonRecord& record) override;
    void remove() override;
    bool isUnreadable() override;
    std::optional<HoldEnd> readLastEnd() override;
    void writeLastEnd(const HoldEnd& end) override;

private:
    template<class R>
    [[nodiscard]] std::optional<R> decode(const std::string& name, std::size_t maxSize) const;
    [[nodiscard]] bool owns(const Folder& folder) const;

    std::string directory_;
    std::string name_;
    uid_t expectedOwner_;
    Disk& disk_;
};

} // namespace velmo
