#pragma once

#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowRecord.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Turns the platform's window list into the list for the phone.
namespace velmo::WindowList {

/// What the platform tells of the process that a window belongs to.
struct Owner {
    std::optional<std::string> bundleId;
    bool isRegularApp = false;             ///< it has an icon in the Dock
    std::optional<std::int64_t> startTime; ///< in the unit of `AppTarget::startedText`
};

using OwnerOf = std::function<Owner(std::int32_t pid)>;

/// Returns the records of the rows that `WindowFilter::keep` keeps, in the order of the list, which
/// is from front to back. The front window is the first one on screen of the frontmost process.
/// `minimized` is false in all records: only accessibility knows it, so that the caller sets it.
std::vector<WindowRecord> records(std::span<const CGWindowRow> rows, std::int32_t ownPid,
                                  std::optional<std::int32_t> frontmostPid, const OwnerOf& ownerOf);

} // namespace velmo::WindowList
