#include "platform/host/FinderSelectionIdentity.h"

#include "platform/posix/DiskPath.h"

#include <type_traits>

namespace velmo::FinderSelectionParse {

std::optional<FileIdentity> lstatIdentity(std::string_view path) {
    return DiskPath::linkStatus(path).transform([](const struct stat& found) {
        return FileIdentity{.device = static_cast<std::make_unsigned_t<dev_t>>(found.st_dev),
                            .inode = found.st_ino};
    });
}

} // namespace velmo::FinderSelectionParse
