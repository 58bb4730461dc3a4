#include "core/terminal/PtyFrame.h"
#include "fuzz/Frames.h"

#include <functional>

namespace velmo::Fuzz {

namespace {

void checkPtyFrames(Input input) {
    ByteView stream;
    const auto decoded = requireSlicingIsIgnored<PtyFrame::Decoder>(input, stream, std::identity());
    Bytes encoded;
    for (const auto& frame : decoded.frames) {
        const auto bytes = PtyFrame::encode(frame.kind, frame.payload);
        require(bytes && frame.payload.size() <= PtyFrame::maxPayload);
        encoded.insert(encoded.end(), bytes->begin(), bytes->end());
        require(frame.signal().has_value() == (frame.kind == PtyFrame::Kind::signal));
        require(frame.size().has_value() == (frame.kind == PtyFrame::Kind::resize));
        require(!frame.size() || PtyFrame::validSize(frame.size()->cols, frame.size()->rows));
    }
    require(std::ranges::equal(encoded, stream.first(encoded.size())));
    require(decoded.error || encoded.size() + decoded.buffered == stream.size());
}

const Target ptyFramesTarget("PtyFrames", checkPtyFrames);

} // namespace

} // namespace velmo::Fuzz
