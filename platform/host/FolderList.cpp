#include "platform/host/FolderList.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <string_view>

namespace velmo::Inventory {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Tells whether the entry is a folder or a link to one. The disk is asked only if the list doesn't
/// say.
bool leadsToDirectory(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    const int descriptor = ::dirfd(folder);
    struct stat status{};
    return descriptor >= 0 && ::fstatat(descriptor, entry.d_name, &status, 0) == 0
           && S_ISDIR(status.st_mode);
}

} // namespace

std::vector<Entry> listFolder(const std::string& path) {
    std::vector<Entry> entries;
    const std::unique_ptr<DIR, CloseFolder> folder(path.contains('\0') ? nullptr
                                                                       : ::opendir(path.c_str()));
    if (folder == nullptr)
        return entries;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads `folder`
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            entries.push_back(
                {.name = std::string(name), .isDirectory = leadsToDirectory(folder.get(), *entry)});
    }
    return entries;
}

} // namespace velmo::Inventory
