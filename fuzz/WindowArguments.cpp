#include "core/support/Text.h"
#include "core/windows/AppTarget.h"
#include "core/windows/FrameArgs.h"
#include "core/windows/FrameRequest.h"
#include "core/windows/WindowArgs.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>

namespace velmo::Fuzz {

namespace {

std::string number(double value) {
    require(value == std::trunc(value) && std::abs(value) <= FrameArgs::limit);
    return std::to_string(static_cast<std::int64_t>(value));
}

void requireRoundTrip(const FrameRequest& request) {
    const WindowBounds& frame = request.frame;
    std::vector<std::string> words{std::to_string(request.pid),
                                   request.appId,
                                   request.started.value_or("-"),
                                   std::to_string(request.windowId),
                                   number(frame.x),
                                   number(frame.y),
                                   number(frame.width),
                                   number(frame.height)};
    if (request.auto_)
        words.emplace_back("auto");
    require(frame.width >= 1 && frame.height >= 1 && request.windowId >= 1);
    require(FrameRequest::parse(words) == request);
    require(AppTarget::parse(std::span(words).first(3)).has_value());
}

void checkWindowArguments(Input input) {
    const auto words = input.words();
    if (const auto target = AppTarget::parse(words)) {
        require(target->pid >= 1 && !target->appId.empty() && !Text::hasControl(target->appId));
        require(!target->started || (!target->started->empty() && target->started->size() <= 20));
    }
    if (const auto request = FrameRequest::parse(words))
        requireRoundTrip(*request);
    for (const std::string& word : words) {
        if (const auto id = WindowArgs::windowId(word))
            require(*id >= 1 && WindowArgs::windowId(std::to_string(*id)) == id);
        if (const auto width = WindowArgs::maxWidth(word)) {
            const auto size = WindowArgs::thumbnailSize(1e9, 1e-9, *width);
            require(*width >= 32 && *width <= 1024 && size.width == *width && size.height == 1);
        }
    }
}

const Target windowArgumentsTarget("WindowArguments", checkWindowArguments);

} // namespace

} // namespace velmo::Fuzz
