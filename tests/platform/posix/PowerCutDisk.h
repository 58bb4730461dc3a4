#pragma once

#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/posix/Disk.h"

#include <cerrno>
#include <fstream>
#include <limits>
#include <map>
#include <vector>

namespace velmo {

/// A disk that loses unsynchronised changes when the power is cut. The calls work on real files; a
/// log beside them keeps what each call has changed, in a file's content or a folder's names, and
/// whether the change is certain to be on the drive.
class PowerCutDisk final : public Disk {
public:
    using Path = std::filesystem::path;
    static constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

    [[nodiscard]] const Path& path() const { return path_; }

    /// Makes the calls with the numbers `first` to `last` fail, both included, counted from now on.
    /// A failing call does nothing, except that half of a write is done. Without a `last` every
    /// later call fails, as after a power cut or a kill.
    void fail(std::size_t first, std::size_t last = never) {
        calls.clear();
        firstFailing_ = first;
        lastFailing_ = last;
    }

    /// Cuts the power, and calls `look` with every state in which the disk may be afterwards: a
    /// change that is not synchronised may be lost or not, and half of a write may be lost.
    template<class Look>
    void cutPower(const Look& look) const {
        std::size_t ways = 1;
        for (const Change& change : log_)
            ways *= waysToLose(change);
        for (std::size_t way = 0; way < ways; ++way) {
            const TemporaryFolder left;
            writeOut(left.path(), way);
            look(left.path());
        }
    }

    int makeFolder(const std::string& path, mode_t mode) override {
        const int error = happens("makeFolder") ? Disk::makeFolder(path, mode) : EIO;
        if (error == 0)
            log({.name = path, .file = isFolder});
        return error;
    }

    Descriptor createFile(int folder, const std::string& name, mode_t mode) override {
        auto file = happens("createFile") ? Disk::createFile(folder, name, mode) : Descriptor();
        if (file)
            log({.name = pathOf(folder) / name, .file = ++lastFile_});
        return file;
    }

    bool write(int file, std::string_view content) override {
        const bool whole = happens("write");
        content = content.substr(0, content.size() / (whole ? 1 : 2));
        log_.push_back({.file = names_.at(pathOf(file)), .written = std::string(content)});
        return Disk::write(file, content) && whole;
    }

    bool synchronize(int fileOrFolder) override {
        if (!happens("synchronize"))
            return false;
        const Path path = pathOf(fileOrFolder);
        const auto file = names_.find(path);
        for (Change& change : log_)
            change.isSafe |= change.name.empty()
                                 ? file != names_.end() && file->second == change.file
                                 : change.name.parent_path() == path;
        return true;
    }

    bool rename(int folder, const std::string& from, const std::string& to) override {
        if (!happens("rename") || !Disk::rename(folder, from, to))
            return false;
        const Path path = pathOf(folder);
        log({.name = path / to, .from = path / from, .file = names_.at(path / from)});
        return true;
    }

    bool remove(int folder, const std::string& name) override {
        if (!happens("remove") || !Disk::remove(folder, name))
            return false;
        log({.name = pathOf(folder) / name, .file = isGone});
        return true;
    }

    std::vector<std::string> calls; ///< since the last `fail`, the failed ones too

private:
    static constexpr int isFolder = 0;
    static constexpr int isGone = -1;
    using Names = std::map<Path, int>; ///< by name: a file's number or one of the two above

    struct Change {
        Path name; ///< the name that has another meaning now; empty for a write
        Path from; ///< the name that a rename takes away
        int file = isGone;
        std::string written;
        bool isSafe = false;
    };

    static std::size_t waysToLose(const Change& change) {
        if (change.isSafe)
            return 1;
        return change.name.empty() ? 3 : 2;
    }

    static void apply(const Change& change, Names& names) {
        names.erase(change.from);
        names[change.name] = change.file;
    }

    static Path pathOf(int descriptor) {
        return PtyAttach::HostFileSystem().pathOf(descriptor).value();
    }

    bool happens(const char* call) {
        calls.emplace_back(call);
        return calls.size() <= firstFailing_ || calls.size() - 1 > lastFailing_;
    }

    void log(const Change& change) {
        log_.push_back(change);
        apply(change, names_);
    }

    /// Writes the files that are left. The files in a lost folder are lost with it.
    void writeOut(const Path& left, std::size_t way) const {
        Names names;
        std::map<int, std::string> contents;
        for (const Change& change : log_) {
            const std::size_t lost = way % waysToLose(change);
            way /= waysToLose(change);
            if (change.name.empty())
                contents[change.file] +=
                    change.written.substr(0, change.written.size() * (2 - lost) / 2);
            else if (lost == 0)
                apply(change, names);
        }
        std::error_code lostAbove;
        for (const auto& [name, file] : names) {
            const Path place = left / name.lexically_relative(path_);
            if (file == isFolder)
                std::filesystem::create_directory(place, lostAbove);
            else if (file != isGone)
                std::ofstream(place) << contents[file];
        }
    }

    TemporaryFolder temporary_;
    Path path_ = std::filesystem::canonical(temporary_.path());
    std::vector<Change> log_;
    Names names_;
    int lastFile_ = 0;
    std::size_t firstFailing_ = never;
    std::size_t lastFailing_ = never;
};

} // namespace velmo
