#include "core/apps/Inventory.h"

#include "core/support/PathText.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>
#include <utility>

namespace velmo::Inventory {

namespace {

constexpr std::string_view bundleSuffix = ".app";

/// Returns the path without ".", "..", doubled and trailing slashes. Links are not resolved.
std::string standardised(const std::string& path) {
    std::string result = std::filesystem::path(path).lexically_normal().string();
    if (result.size() > 1 && result.ends_with('/'))
        result.pop_back();
    return result;
}

/// The path of a folder or bundle.
struct Place {
    std::string path; ///< as it was reached
    std::string key;  ///< standardised

    [[nodiscard]] Place at(std::string_view name) const {
        return {.path = PathText::join(path, name), .key = PathText::join(key, name)};
    }
};

class Scan {
public:
    explicit Scan(const Services& services) : services_(services) {}

    /// Adds the bundles that lie directly in the folder, and calls `enter` with its other folders.
    template<class Enter>
    void walk(const Place& folder, const Enter& enter) {
        for (const Entry& entry : services_.entries(folder.path)) {
            if (entry.name.starts_with('.'))
                continue;
            if (entry.name.ends_with(bundleSuffix))
                add(folder.at(entry.name), entry.name);
            else if (entry.isDirectory)
                enter(folder.at(entry.name));
        }
    }

    std::vector<AppRecord> sorted() {
        // No two records are equal, since each path is listed once: the sort need not be stable.
        std::ranges::sort(records_, [&](const AppRecord& a, const AppRecord& b) {
            const auto order = services_.byCharacter(a.name, b.name);
            return order == 0 ? a.path < b.path : order < 0;
        });
        return std::move(records_);
    }

private:
    void add(Place place, std::string_view fileName) {
        if (!seen_.insert(std::move(place.key)).second)
            return;
        BundleInformation found = services_.bundle(place.path);
        fileName.remove_suffix(bundleSuffix.size());
        auto name = found.displayName ? std::move(found.displayName) : std::move(found.name);
        records_.push_back({.name = std::move(name).value_or(std::string(fileName)),
                            .path = std::move(place.path),
                            .bundleId = std::move(found.identifier).value_or(""),
                            .version = std::move(found.version).value_or("")});
        if (services_.progress)
            services_.progress(records_.size());
    }

    const Services& services_;
    std::unordered_set<std::string> seen_;
    std::vector<AppRecord> records_;
};

} // namespace

std::array<FileUrl, 3> defaultDirectories(std::string_view home) {
    return {FileUrl{"/Applications"}, FileUrl{"/System/Applications"},
            FileUrl{PathText::join(home, "Applications")}};
}

std::vector<AppRecord> scan(std::span<const FileUrl> directories, const Services& services) {
    Scan scan(services);
    for (const auto& [path] : directories) {
        const Place directory{.path = path, .key = standardised(path)};
        scan.walk(directory, [&](const Place& folder) { scan.walk(folder, [](const Place&) {}); });
    }
    return scan.sorted();
}

} // namespace velmo::Inventory
