#include "core/windows/FrameRequest.h"

#include "core/windows/FrameArgs.h"
#include "core/windows/WindowArgs.h"

#include <cstddef>
#include <utility>

namespace velmo {

namespace {

constexpr std::size_t minArguments = 8;
constexpr std::size_t targetArguments = 3;

} // namespace

std::optional<FrameRequest> FrameRequest::parse(std::span<const std::string> arguments) {
    const bool isAuto = arguments.size() == minArguments + 1 && arguments.back() == "auto";
    if (arguments.size() != minArguments && !isAuto)
        return std::nullopt;
    auto target = AppTarget::parse(arguments.first(targetArguments));
    const auto windowId = WindowArgs::windowId(arguments[3]);
    const auto x = FrameArgs::coordinate(arguments[4]);
    const auto y = FrameArgs::coordinate(arguments[5]);
    const auto width = FrameArgs::length(arguments[6]);
    const auto height = FrameArgs::length(arguments[7]);
    if (!target || !windowId || !x || !y || !width || !height)
        return std::nullopt;
    return FrameRequest{.pid = target->pid,
                        .appId = std::move(target->appId),
                        .started = std::move(target->started),
                        .windowId = *windowId,
                        .frame = {.x = static_cast<double>(*x),
                                  .y = static_cast<double>(*y),
                                  .width = static_cast<double>(*width),
                                  .height = static_cast<double>(*height)},
                        .auto_ = isAuto};
}

} // namespace velmo
