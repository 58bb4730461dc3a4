#include "core/apps/Inventory.h"

#include "bench/ColdFiles.h"
#include "bench/Suite.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/FolderList.h"
#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"
#include "platform/host/PropertyListFile.h"

#include <plist/plist.h>

#include <fstream>
#include <map>
#include <memory>
#include <sstream>

namespace velmo::bench {

namespace {

std::string information(std::size_t number) {
    std::ostringstream list;
    list << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
         << "<key>CFBundleName</key><string>Application " << number << "</string>"
         << "<key>CFBundleIdentifier</key><string>com.example.a" << number << "</string>"
         << "<key>CFBundleShortVersionString</key><string>1." << number << "</string>";
    // Such files contain much else.
    for (int i = 0; i < 40; ++i)
        list << "<key>Key" << i << "</key><array><string>value</string><integer>" << i
             << "</integer></array>";
    list << "</dict></plist>";
    return list.str();
}

/// A folder of applications on the disk, which is removed with the object.
class Applications {
public:
    explicit Applications(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto contents = folder_.path() / (std::to_string(i) + ".app") / "Contents";
            std::filesystem::create_directories(contents);
            lists_.push_back((contents / "Info.plist").string());
            std::ofstream(lists_.back()) << information(i);
        }
    }

    /// Makes the system forget what the files contain, though not where they lie.
    void cool() const {
        for (const std::string& path : lists_)
            forgetContent(path);
    }

    [[nodiscard]] std::size_t scan() const {
        std::size_t told = 0;
        const FileUrl directories[] = {{folder_.path().string()}};
        return Inventory::scan(directories,
                               {.entries = Inventory::listFolder,
                                .bundle = PropertyList::bundle,
                                .byCharacter = localisedComparison(DigitOrder::byCharacter),
                                .progress = [&](std::size_t found) { use(told = found); }})
            .size();
    }

    [[nodiscard]] std::size_t readLists() const {
        std::size_t read = 0;
        for (const std::string& path : lists_) {
            plist_t list = nullptr;
            const std::string bytes = PropertyList::readFile(path).value_or("");
            const auto size = static_cast<std::uint32_t>(bytes.size());
            const bool isBinary = plist_is_binary(bytes.data(), size) != 0;
            (isBinary ? plist_from_bin : plist_from_xml)(bytes.data(), size, &list);
            read += list != nullptr ? 1 : 0;
            plist_free(list);
        }
        return read;
    }

private:
    TemporaryFolder folder_;
    std::vector<std::string> lists_;
};

} // namespace

void addInventory(Suite& suite) {
    const auto applications = std::make_shared<const Applications>(1000);
    const auto compare = [&](const std::string& what, bool isCold, double aim) {
        const auto body = [=](std::size_t (Applications::*work)() const) {
            return [=](benchmark::State& state) {
                for (auto _ : state) {
                    if (isCold) {
                        state.PauseTiming();
                        applications->cool();
                        state.ResumeTiming();
                    }
                    use((*applications.*work)());
                }
            };
        };
        suite.compare(
            {.what = what,
             .input = "1000 bundles, each told to a progress callback",
             .aims = {{.contender = "libplist", .factor = aim, .doesLess = parsesOnly}}},
            {{ours, body(&Applications::scan)}, {"libplist", body(&Applications::readLists)}});
    };
    compare("Inventory::scan", false, 0.5);
    compare("Inventory::scan, files not read before", true, 0.5);
    suite.grow({.what = "Inventory::scan", .unit = "bundles", .sizes = {25, 100, 400, 1600}},
               [made = std::make_shared<std::map<long, Applications>>()](benchmark::State& state) {
                   const auto count = state.range(0);
                   const Applications& some =
                       made->try_emplace(count, static_cast<std::size_t>(count)).first->second;
                   for (auto _ : state)
                       use(some.scan());
               });
}

} // namespace velmo::bench
