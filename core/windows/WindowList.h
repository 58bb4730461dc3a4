#pragma once

#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowRecord.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Makes of the platform's window list what the phone is told of it.
namespace velmo::WindowList {

/// What the platform tells of the process that a window belongs to.
struct Owner {
    std::optional<std::string> bundleId;
    bool isRegularApp = false;             ///< it has an icon in the Dock
    std::optional<std::int64_t> startTime; ///< in the unit of `AppTarget::startedText`
};

using OwnerOf = std::function<Owner(std::int32_t pid)>;

/// Returns the records of the rows that `WindowFilter::keep` keeps, in the order of the list, which
/// is from front to back. The first of the frontmost process that is on screen is the front window.
/// `minimized` is false in all: only accessibility tells, so the caller sets it.
std::vector<WindowRecord> records(std::span<const CGWindowRow> rows, std::int32_t ownPid,
                                  std::optional<std::int32_t> frontmostPid, const OwnerOf& ownerOf);

} // namespace velmo::WindowList
