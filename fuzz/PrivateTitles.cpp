#include "core/support/Text.h"
#include "core/windows/WindowPrivacy.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

/// A private window is recognised however its title is spelt and whatever stands around it.
void checkPrivateTitles(Input input) {
    const std::string title(input.rest());
    const bool found = WindowPrivacy::looksPrivate(title);
    require(WindowPrivacy::looksPrivate(Text::lowercased(title)) == found);
    require(WindowPrivacy::looksPrivate(Text::composed(title)) == found);
    require(!found || WindowPrivacy::looksPrivate("Page " + title + " 1"));
    for (const std::string_view marker : WindowPrivacy::privateTitleMarkers)
        require(WindowPrivacy::looksPrivate(title + " " + std::string(marker)));
    require(WindowPrivacy::isSensitiveApp(title)
            == WindowPrivacy::isSensitiveApp(Text::lowercased(title)));
}

const Target privateTitlesTarget("PrivateTitles", checkPrivateTitles);

} // namespace

} // namespace velmo::Fuzz
