#pragma once

#include "lab/instruments/TemporaryFolder.h"
#include "tests/Texts.h"

#include <fstream>

namespace velmo {

/// A home folder on the real disk with links, files and folders in it, and `root / "link"`, a link
/// to the home folder.
class HomeOnDisk : public testing::Test {
protected:
    HomeOnDisk() {
        namespace fs = std::filesystem;
        fs::create_directories(home / "dev/app");
        fs::create_directories(home / ".ssh");
        std::ofstream(home / "dev/text") << "text";
        const std::pair<const char*, const char*> links[] = {
            {"link", "home"},
            {"claude", "/bin/sh"},
            {"home/dev/keys", "../.ssh"},
            {"home/dev/out", "/etc"},
            {"home/dev/short", "app"},
            {"home/dev/loop", "loop"},
            {"home/dev/dangling", "../.ssh/later"},
        };
        for (const auto& [path, target] : links)
            fs::create_symlink(target, root / path);
    }

    /// Returns the path, in which "~" stands for the home folder and "@" for the link to it.
    [[nodiscard]] std::string at(std::string path) const {
        if (path.starts_with('~'))
            path.replace(0, 1, home.string());
        return path.starts_with('@') ? path.replace(0, 1, (root / "link").string()) : path;
    }

    TemporaryFolder temporary;
    std::filesystem::path root = std::filesystem::canonical(temporary.path());
    std::filesystem::path home = root / "home";
};

} // namespace velmo
