#include "platform/daemon/simulated/SimulatedRecordStore.h"

#include <unistd.h>

#include <system_error>

namespace velmo {

namespace fs = std::filesystem;

namespace {

fs::path elsewhere(const fs::path& directory) {
    return directory.parent_path() / "elsewhere";
}

void plantLink(const fs::path& directory) {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    fs::create_directories(elsewhere(directory), ignored);
    fs::create_directory_symlink(elsewhere(directory), directory, ignored);
}

void removeLink(const fs::path& directory) {
    std::error_code ignored;
    if (fs::is_symlink(directory, ignored))
        fs::remove(directory, ignored);
}

} // namespace

SimulatedRecordStore::SimulatedRecordStore(MacFolder folder, std::string_view directory,
                                           std::string_view name,
                                           std::function<void()> beforeEffect)
    : folder_(std::move(folder)),
      beforeEffect_(std::move(beforeEffect)),
      directory_(folder_.inside(directory)),
      // On a Mac root owns this folder; here the user that the daemon runs as does.
      file_(directory_.string(), name, ::getuid()) {
}

RecordFolderFault SimulatedRecordStore::fault() const {
    const auto mac = folder_.load();
    return mac ? mac->faults.recordFolder : RecordFolderFault::none;
}

bool SimulatedRecordStore::write(const PowerDaemonRecord& record) {
    beforeEffect_();
    const auto wrong = fault();
    if (wrong == RecordFolderFault::readOnly)
        return false;
    if (wrong == RecordFolderFault::link)
        plantLink(directory_);
    else
        removeLink(directory_);
    return file_.write(record);
}

void SimulatedRecordStore::remove() {
    beforeEffect_();
    file_.remove();
}

void SimulatedRecordStore::writeLastEnd(const HoldEnd& end) {
    beforeEffect_();
    if (fault() != RecordFolderFault::readOnly)
        file_.writeLastEnd(end);
}

} // namespace velmo
