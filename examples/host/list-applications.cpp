/// Lists the applications in folders, or those of this user: list-applications [FOLDER...].

#include "core/apps/Inventory.h"
#include "core/output/Output.h"
#include "platform/host/FolderList.h"
#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"

#include <cstdlib>
#include <iostream>

using namespace velmo;

int main(int count, char** arguments) {
    const char* home = std::getenv("HOME");
    std::vector<FileUrl> folders;
    for (int i = 1; i < count; ++i)
        folders.push_back({.path = arguments[i]});
    if (folders.empty())
        std::ranges::copy(Inventory::defaultDirectories(home == nullptr ? "/" : home),
                          std::back_inserter(folders));

    const Inventory::Services mac{.entries = Inventory::listFolder,
                                  .bundle = PropertyList::bundle,
                                  .byCharacter = localisedComparison(DigitOrder::byCharacter)};
    for (AppRecord& application : Inventory::scan(folders, mac)) {
        application.path.erase(0, application.path.rfind('/') + 1); // for a short line here
        Output::print(application, [](std::string_view line) { std::cout << line; });
    }
}
