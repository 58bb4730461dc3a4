#include "core/windows/WindowMove.h"

#include "core/windows/WindowLookup.h"

namespace velmo::WindowMove {

namespace {

constexpr int attempts = 2;

bool sameSize(const WindowBounds& a, const WindowBounds& b) {
    return a.width == b.width && a.height == b.height;
}

} // namespace

std::expected<FrameRecord, Refusal> perform(const FrameRequest& request, const Services& services) {
    const WindowRequest wanted = request.window();
    const auto found = WindowLookup::perform<Refusal>(wanted, services);
    if (!found)
        return std::unexpected(found.error());

    const bool resizable = services.isResizable(found->window);
    const auto& before = found->facts.bounds;
    auto now = before;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        for (const FramePlan::Step& step : FramePlan::steps(now, request.frame, resizable))
            services.apply(found->window, step);
        now = services.bounds(found->window);
        if (FramePlan::landed(now, request.frame, resizable))
            return FrameRecord{.x = now->x,
                               .y = now->y,
                               .width = now->width,
                               .height = now->height,
                               .resized = before ? !sameSize(*before, *now) : resizable};
        if (!WindowLookup::listed(wanted, services.windowList()))
            return std::unexpected(Refusal::noWindow);
    }
    return std::unexpected(Refusal::notLanded);
}

} // namespace velmo::WindowMove
