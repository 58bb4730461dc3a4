#include "platform/daemon/RecordFile.h"

#include "platform/posix/Folder.h"

namespace velmo {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

/// Bytes: many times what any record takes. A longer file is none that can be decoded.
constexpr std::size_t maxSize = 65536;

} // namespace

std::optional<PowerDaemonRecord> RecordFile::read() {
    const auto folder = Folder::open(directory_, disk_);
    const auto content = folder ? folder->read(name_, maxSize + 1) : std::nullopt;
    return content && content->size() <= maxSize ? decodeRecord<PowerDaemonRecord>(*content)
                                                 : std::nullopt;
}

bool RecordFile::write(const PowerDaemonRecord& record) {
    const auto folder = Folder::make(directory_, folderMode, disk_);
    if (!folder || folder->owner() != expectedOwner_ || !folder->setMode(folderMode))
        return false;
    // A record that can't be read may be the only word of what the setting was: it stays.
    if (folder->hasFile(name_) && !folder->read(name_, 1))
        return false;
    const auto content = encodeJson(record);
    return content && folder->replace(name_, *content, fileMode);
}

void RecordFile::remove() {
    if (const auto folder = Folder::open(directory_, disk_))
        folder->remove(name_);
}

} // namespace velmo
