#include "core/windows/FrameRequest.h"

#include "core/windows/FrameArgs.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace velmo {

namespace {

constexpr std::size_t minArguments = 8;

/// Returns the nearest whole number of points, or nothing that `parse` accepts.
std::string pointsText(double points) {
    // Written so that "not a number" fails.
    return std::abs(points) <= FrameArgs::limit
               ? std::to_string(static_cast<std::int32_t>(std::round(points)))
               : "";
}

} // namespace

std::optional<FrameRequest> FrameRequest::parse(std::span<const std::string> arguments) {
    const bool isAuto = arguments.size() == minArguments + 1 && arguments.back() == "auto";
    if (arguments.size() != minArguments && !isAuto)
        return std::nullopt;
    auto window = WindowRequest::parse(arguments.first(WindowRequest::argumentCount));
    const auto x = FrameArgs::coordinate(arguments[4]);
    const auto y = FrameArgs::coordinate(arguments[5]);
    const auto width = FrameArgs::length(arguments[6]);
    const auto height = FrameArgs::length(arguments[7]);
    if (!window || !x || !y || !width || !height)
        return std::nullopt;
    return FrameRequest{.pid = window->pid,
                        .appId = std::move(window->appId),
                        .started = std::move(window->started),
                        .windowId = window->windowId,
                        .frame = {.x = static_cast<double>(*x),
                                  .y = static_cast<double>(*y),
                                  .width = static_cast<double>(*width),
                                  .height = static_cast<double>(*height)},
                        .auto_ = isAuto};
}

std::optional<std::vector<std::string>> FrameRequest::words(const WindowRecord& window,
                                                            const WindowBounds& frame) {
    auto arguments = WindowRequest::words(window);
    if (!arguments)
        return std::nullopt;
    for (const double points : {frame.x, frame.y, frame.width, frame.height})
        arguments->push_back(pointsText(points));
    return parse(*arguments) ? std::move(arguments) : std::nullopt;
}

} // namespace velmo
