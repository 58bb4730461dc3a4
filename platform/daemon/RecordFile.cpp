#include "platform/daemon/RecordFile.h"

namespace velmo {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

/// Bytes, many times what any record takes. A longer file counts as unreadable.
constexpr std::size_t maxRecord = 65536;

/// Bytes of the last end, which clients get within a line of limited length.
constexpr std::size_t maxLastEnd = 1024;

} // namespace

template<class R>
std::optional<R> RecordFile::decode(const std::string& name, std::size_t maxSize) const {
    const auto folder = Folder::open(directory_, disk_);
    const auto content = folder ? folder->read(name, maxSize + 1) : std::nullopt;
    return content && content->size() <= maxSize ? decodeRecord<R>(*content) : std::nullopt;
}

bool RecordFile::owns(const Folder& folder) const {
    return folder.owner() == expectedOwner_ && folder.setMode(folderMode);
}

std::optional<PowerDaemonRecord> RecordFile::read() {
    return decode<PowerDaemonRecord>(name_, maxRecord);
}

bool RecordFile::write(const PowerDaemonRecord& record) {
    const auto folder = Folder::make(directory_, folderMode, disk_);
    if (!folder || !owns(*folder))
        return false;
    // A record that can't be read may be the only trace of the previous setting, so it stays.
    if (folder->hasFile(name_) && !folder->read(name_, 1))
        return false;
    const auto content = encodeJson(record);
    return content && folder->replace(name_, *content, fileMode);
}

void RecordFile::remove() {
    if (const auto folder = Folder::open(directory_, disk_))
        folder->remove(name_);
}

bool RecordFile::isUnreadable() {
    const auto folder = Folder::open(directory_, disk_);
    return folder && folder->hasFile(name_) && !read();
}

std::optional<HoldEnd> RecordFile::readLastEnd() {
    return decode<HoldEnd>(std::string(lastHoldEndName), maxLastEnd);
}

void RecordFile::writeLastEnd(const HoldEnd& end) {
    const auto folder = Folder::open(directory_, disk_);
    const auto content = encodeJson(end);
    if (folder && owns(*folder) && content)
        static_cast<void>(folder->replace(std::string(lastHoldEndName), *content, fileMode));
}

} // namespace velmo
