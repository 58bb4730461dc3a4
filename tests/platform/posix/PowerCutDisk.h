#pragma once

#include "platform/posix/Disk.h"

#include "lab/instruments/TemporaryFolder.h"
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// A disk that remembers what was synchronised, and loses the rest when the power is cut. It works
/// on real files, and keeps beside them what of each file's content, and of each folder's names,
/// the drive has for sure and what it may or may not have.
class PowerCutDisk final : public Disk {
public:
    static constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

    PowerCutDisk() : root_(add(AT_FDCWD, path().string())) {}

    [[nodiscard]] const std::filesystem::path& path() const { return folder_.path(); }

    /// Of the calls from now on those with these numbers fail, `first` and `last` included. They do
    /// nothing, except that half of a write is done. With no `last` the process is as good as dead.
    void fail(std::size_t first, std::size_t last = never) {
        calls.clear();
        firstFailing_ = first;
        lastFailing_ = last;
    }

    /// Cuts the power: shows every disk that there may be afterwards, one after another.
    template<class Look>
    void cutPower(const Look& look) const {
        Choices choices;
        do {
            const TemporaryFolder left;
            writeOut(*root_, left.path(), choices);
            look(left.path());
        } while (choices.advance());
    }

    int makeFolder(const std::string& path, mode_t mode) override {
        if (!happens("makeFolder"))
            return EIO;
        const int error = Disk::makeFolder(path, mode);
        const std::filesystem::path made = path;
        if (error == 0)
            at(AT_FDCWD, made.parent_path())
                ->changes.push_back({{made.filename(), add(AT_FDCWD, path)}});
        return error;
    }

    Descriptor createFile(int folder, const std::string& name, mode_t mode) override {
        Descriptor file =
            happens("createFile") ? Disk::createFile(folder, name, mode) : Descriptor();
        if (file)
            at(folder).changes.push_back({{name, add(folder, name)}});
        return file;
    }

    bool write(int file, std::string_view content) override {
        const bool whole = happens("write");
        content = content.substr(0, content.size() / (whole ? 1 : 2));
        at(file).written += content;
        return Disk::write(file, content) && whole;
    }

    bool synchronize(int fileOrFolder) override {
        if (!happens("synchronize"))
            return false;
        Node& node = at(fileOrFolder);
        node.content += std::exchange(node.written, {});
        for (const Names& change : std::exchange(node.changes, {}))
            apply(change, node.names);
        return true;
    }

    bool rename(int folder, const std::string& from, const std::string& to) override {
        if (!happens("rename"))
            return false;
        at(folder).changes.push_back({{from, nullptr}, {to, at(folder, from)}});
        return Disk::rename(folder, from, to);
    }

    bool remove(int folder, const std::string& name) override {
        if (!happens("remove") || !Disk::remove(folder, name))
            return false;
        at(folder).changes.push_back({{name, nullptr}});
        return true;
    }

    [[nodiscard]] std::size_t failing() const { return firstFailing_; }

    std::vector<std::string> calls; ///< since `fail`, by name, the failed ones too

private:
    struct Node;
    using Names = std::map<std::string, std::shared_ptr<Node>>; ///< null: the name is gone

    /// A file has content, a folder names.
    struct Node {
        bool isFolder = false;
        std::string content;        ///< synchronised
        std::string written;        ///< since then
        Names names;                ///< synchronised
        std::vector<Names> changes; ///< since then; each happens whole or not at all
    };

    /// Goes through all ways to choose, one after another, like the numbers of an odometer.
    class Choices {
    public:
        std::size_t among(std::size_t count) {
            if (next_ == made_.size())
                made_.push_back({.choice = 0, .count = count});
            return made_[next_++].choice;
        }

        bool advance() {
            next_ = 0;
            while (!made_.empty() && ++made_.back().choice == made_.back().count)
                made_.pop_back();
            return !made_.empty();
        }

    private:
        struct Made {
            std::size_t choice;
            std::size_t count;
        };

        std::vector<Made> made_;
        std::size_t next_ = 0;
    };

    bool happens(const char* call) {
        calls.emplace_back(call);
        return calls.size() <= firstFailing_ || calls.size() - 1 > lastFailing_;
    }

    static struct stat status(int folder, const std::string& name) {
        struct stat found{};
        ::fstatat(folder, name.c_str(), &found, AT_SYMLINK_NOFOLLOW);
        return found;
    }

    std::shared_ptr<Node>& at(int folder, const std::string& name) {
        return nodes_[status(folder, name).st_ino];
    }

    Node& at(int descriptor) {
        struct stat found{};
        ::fstat(descriptor, &found);
        return *nodes_.at(found.st_ino);
    }

    std::shared_ptr<Node> add(int folder, const std::string& name) {
        return at(folder, name) =
                   std::make_shared<Node>(Node{.isFolder = S_ISDIR(status(folder, name).st_mode)});
    }

    static void apply(const Names& change, Names& names) {
        for (const auto& [name, node] : change)
            names[name] = node;
    }

    // NOLINTNEXTLINE(misc-no-recursion): as deep as the folders
    static void writeOut(const Node& node, const std::filesystem::path& path, Choices& choices) {
        if (!node.isFolder) {
            const std::size_t lost = node.written.empty() ? 0 : choices.among(3); // halves
            std::ofstream(path) << node.content
                                << node.written.substr(0, node.written.size() * (2 - lost) / 2);
            return;
        }
        std::filesystem::create_directories(path);
        Names names = node.names;
        for (const Names& change : node.changes) {
            if (choices.among(2) == 0)
                apply(change, names);
        }
        for (const auto& [name, child] : names) {
            if (child)
                writeOut(*child, path / name, choices);
        }
    }

    TemporaryFolder folder_;
    std::map<ino_t, std::shared_ptr<Node>> nodes_; ///< by the number that the file has now
    std::shared_ptr<Node> root_;
    std::size_t firstFailing_ = never;
    std::size_t lastFailing_ = never;
};

} // namespace velmo
