#pragma once

#include "core/terminal/Pty.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace velmo {

/// A disk of executables, folders and links. Adding an entry adds the folders above it. A path that
/// is not on the disk can't be examined, and counts as writable by others.
class FakeDisk final : public Pty::FileSystem {
public:
    std::map<std::string, std::string, std::less<>> links;
    std::set<std::string, std::less<>> executables;
    std::set<std::string, std::less<>> folders{"/"};
    std::set<std::string, std::less<>> writable; ///< folders, by others
    mutable int questions = 0;                   ///< asked so far

    void addFolder(const std::string& path) {
        for (auto slash = path.find('/', 1); slash != std::string::npos;
             slash = path.find('/', slash + 1))
            folders.insert(path.substr(0, slash));
        folders.insert(path);
    }

    void addProgram(const std::string& path) {
        addFolder(path.substr(0, path.rfind('/')));
        executables.insert(path);
    }

    void link(const std::string& path, const std::string& target) {
        addFolder(path.substr(0, path.rfind('/')));
        links[path] = target;
    }

    std::optional<std::string> realpath(std::string_view path) const override {
        ++questions;
        if (const auto found = links.find(path); found != links.end())
            return found->second;
        if (path.size() > 1 && path.ends_with('/'))
            path.remove_suffix(1);
        if (folders.contains(path) || executables.contains(path))
            return std::string(path);
        return std::nullopt;
    }

    bool isDirectory(std::string_view path) const override {
        ++questions;
        return folders.contains(path);
    }

    bool isExecutable(std::string_view path) const override {
        ++questions;
        return executables.contains(path);
    }

    bool isWorldWritable(std::string_view path) const override {
        ++questions;
        return writable.contains(path) || !folders.contains(path);
    }

    std::optional<std::string> home(const Pty::Environment& environment) const override {
        ++questions;
        const auto given = environment.find("HOME");
        return given == environment.end() ? "/Users/platform" : given->second;
    }
};

} // namespace velmo
