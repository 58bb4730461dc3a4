#include "core/support/Text.h"
#include "core/terminal/AttachWire.h"
#include "fuzz/Frames.h"

namespace velmo::Fuzz {

namespace {

using namespace PtyAttach;

std::string told(const Frame& frame) {
    if (const auto* data = std::get_if<Bytes>(&frame))
        return std::string(textOf(*data));
    return respelt(std::get<ControlObject>(frame).object());
}

void requireLimits(const HostMessage& said) {
    if (const auto* exit = std::get_if<host::Exit>(&said))
        require(exit->code >= 0 && exit->code <= 255);
    if (const auto* error = std::get_if<host::Error>(&said))
        require(!error->code.empty() && error->code.size() <= 32 && !Text::hasControl(error->code)
                && Text::isAscii(error->code));
    if (const auto* ready = std::get_if<host::Ready>(&said)) {
        const Labels& labels = ready->labels;
        for (const std::string& label :
             {labels.exit, labels.detached, labels.ended, labels.hostGone, labels.error})
            require(sanitizeLabel(label) == label);
    }
}

void checkAttachFrames(Input input) {
    ByteView stream;
    const auto decoded = requireSlicingIsIgnored<Decoder>(input, stream, told);
    for (const Frame& frame : decoded.frames) {
        if (const auto* data = std::get_if<Bytes>(&frame)) {
            const auto again = Decoder().feed(PtyAttach::frame(FrameType::data, *data).value());
            require(again && again->size() == 1 && told(again->front()) == told(frame));
            continue;
        }
        const auto said = message(std::get<ControlObject>(frame).object());
        const auto respelt = ControlObject::parse(told(frame));
        requireLimits(said);
        require(respelt && message(respelt->object()) == said);
    }
}

const Target attachFramesTarget("AttachFrames", checkAttachFrames);

} // namespace

} // namespace velmo::Fuzz
