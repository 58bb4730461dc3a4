#include "core/apps/DockPrefsParser.h"
#include "core/support/FileUrl.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

/// The input is read twice: as a path, which is turned into an address and back, and as an address.
void checkFileUrls(Input input) {
    const std::string text(input.rest());
    const auto written = FileUrl{.path = text}.text();
    require(written.has_value() == text.starts_with('/'));
    if (written && Text::isValidUtf8(text) && !text.contains('\0'))
        require(FileUrl::parse(*written) == FileUrl{.path = text});
    else if (written)
        require(!FileUrl::parse(*written));

    const auto read = FileUrl::parse(text);
    require(!read || read->path.empty() || read->path.starts_with('/'));
    require(!read || (Text::isValidUtf8(read->path) && !read->path.contains('\0')));
    const std::string path = DockPrefsParser::path(text);
    require(path.empty() || path.starts_with('/'));
}

const Target fileUrlsTarget("FileUrls", checkFileUrls);

} // namespace

} // namespace velmo::Fuzz
