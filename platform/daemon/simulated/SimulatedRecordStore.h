#pragma once

#include "platform/daemon/RecordFile.h"
#include "platform/simulated/MacFolder.h"

#include <functional>

namespace velmo {

/// Keeps the record of a simulated Mac: the real file store, in a folder that suffers the faults
/// which the machine file asks for.
class SimulatedRecordStore final : public RecordStore {
public:
    /// `beforeEffect` is called before anything is written or removed.
    SimulatedRecordStore(MacFolder folder, std::string_view directory, std::string_view name,
                         std::function<void()> beforeEffect);

    std::optional<PowerDaemonRecord> read() override { return file_.read(); }

    bool write(const PowerDaemonRecord& record) override;

    void remove() override;

    bool isUnreadable() override { return file_.isUnreadable(); }

    std::optional<HoldEnd> readLastEnd() override { return file_.readLastEnd(); }

    void writeLastEnd(const HoldEnd& end) override;

private:
    [[nodiscard]] RecordFolderFault fault() const;

    MacFolder folder_;
    std::function<void()> beforeEffect_;
    std::filesystem::path directory_;
    RecordFile file_;
};

} // namespace velmo
