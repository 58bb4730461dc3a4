#include "platform/daemon/RecordFile.h"

#include "platform/posix/Folder.h"

namespace velmo {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

/// Many times the longest record; a file beyond it is none of ours.
constexpr std::size_t largestRecord = 65536;

} // namespace

std::optional<PowerDaemonRecord> RecordFile::read() {
    const auto folder = Folder::open(directory_);
    const auto content = folder ? folder->read(name_.c_str(), largestRecord) : std::nullopt;
    return content ? decodeRecord<PowerDaemonRecord>(*content) : std::nullopt;
}

bool RecordFile::write(const PowerDaemonRecord& record) {
    const auto folder = Folder::make(directory_, folderMode);
    if (!folder || folder->owner() != expectedOwner_ || !folder->setMode(folderMode))
        return false;
    // What can't be read, now or ever, may be the only word of what sleep was like: it stays.
    if (folder->hasFile(name_.c_str()) && !folder->read(name_.c_str(), largestRecord))
        return false;
    const auto content = encodeJson(record);
    return content && folder->replace(name_.c_str(), *content, fileMode);
}

void RecordFile::remove() {
    if (const auto folder = Folder::open(directory_))
        folder->remove(name_.c_str());
}

} // namespace velmo
