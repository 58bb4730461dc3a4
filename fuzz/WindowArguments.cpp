#include "core/support/Ascii.h"
#include "core/support/Text.h"
#include "core/windows/AppTarget.h"
#include "core/windows/FrameRequest.h"
#include "core/windows/WindowArgs.h"
#include "core/windows/WindowRecord.h"
#include "core/windows/WindowRequest.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

void requireRoundTrip(const FrameRequest& request) {
    const WindowRecord window{.id = request.windowId,
                              .pid = request.pid,
                              .appId = request.appId,
                              .started = request.started.value_or("-")};
    auto words = FrameRequest::words(window, request.frame);
    require(words.has_value());
    if (request.auto_)
        words->emplace_back("auto");
    require(FrameRequest::parse(*words) == request);
    require(WindowRequest::parse(WindowRequest::words(window).value()) == request.window());
    require(request.frame.width >= 1 && request.frame.height >= 1 && request.windowId >= 1);
}

void checkWindowArguments(Input input) {
    const auto words = input.words();
    if (const auto target = AppTarget::parse(words)) {
        require(target->pid >= 1 && !target->appId.empty());
        require(std::ranges::none_of(target->appId, Ascii::isControl)
                && !Text::hasAny(target->appId, Text::isNewline));
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
