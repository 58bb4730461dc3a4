#include "core/windows/WindowList.h"

#include "core/windows/AppTarget.h"
#include "core/windows/WindowFilter.h"
#include "core/windows/WindowMatcher.h"

namespace velmo::WindowList {

std::vector<WindowRecord> records(std::span<const CGWindowRow> rows, std::int32_t ownPid,
                                  std::optional<std::int32_t> frontmostPid,
                                  const OwnerOf& ownerOf) {
    std::vector<CGWindowRow> kept;
    std::vector<WindowRecord> records;
    for (const CGWindowRow& row : rows) {
        const Owner owner = ownerOf(row.pid);
        if (!WindowFilter::keep(row, ownPid, owner.bundleId, owner.isRegularApp))
            continue;
        kept.push_back(row);
        records.push_back({.id = row.id,
                           .pid = row.pid,
                           .app = row.owner,
                           .appId = owner.bundleId.value_or(""),
                           .title = row.title.value_or(""),
                           .bounds = row.bounds,
                           .onScreen = row.onScreen,
                           .started = AppTarget::startedText(owner.startTime)});
    }
    if (const auto front = WindowMatcher::frontIndex(kept, frontmostPid))
        records[*front].front = true;
    return records;
}

} // namespace velmo::WindowList
