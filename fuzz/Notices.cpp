#include "core/terminal/AttachLabels.h"
#include "fuzz/Fuzz.h"
#include "sessions/NoticeReader.h"

namespace velmo::Fuzz {

namespace {

/// The input is a program's output. The last notice must be the same if the output comes byte by
/// byte and if it comes all at once, and may be shown as it is.
void checkNotices(Input input) {
    const ByteView output = input.restBytes();
    NoticeReader oneByOne;
    std::optional<NoticeReader::Notice> last;
    for (std::size_t i = 0; i < output.size(); ++i) {
        const auto notice = oneByOne.read(output.subspan(i, 1));
        if (notice && (!last || !notice->empty()))
            last = notice;
    }
    require(NoticeReader().read(output) == last);
    require(!last || PtyAttach::sanitizeLabel(*last) == *last);
}

const Target noticesTarget("Notices", checkNotices);

} // namespace

} // namespace velmo::Fuzz
