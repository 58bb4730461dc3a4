/// Lists the windows for the phone, and moves the one that it picks to the left half of the
/// display. The Mac is a stub with one application; it prints the steps that it would take.

#include "core/output/Output.h"
#include "core/windows/ArrangePolicy.h"
#include "core/windows/DisplayRecord.h"
#include "core/windows/WindowList.h"
#include "core/windows/WindowMove.h"

#include <algorithm>
#include <iostream>

using namespace velmo;

namespace {

constexpr std::int64_t startTime = 1700000000123456; // microseconds since 1970

/// The rows that CGWindowListCopyWindowInfo gives: a menu in front of the application's one window.
std::vector<CGWindowRow> windowList() {
    return {{.id = 9, .pid = 501, .owner = "Notes", .layer = 25, .onScreen = true},
            {.id = 7,
             .pid = 501,
             .owner = "Notes",
             .title = "Shopping",
             .bounds = {.x = 200, .y = 100, .width = 900, .height = 700},
             .onScreen = true}};
}

/// The window as accessibility shows it and changes it.
AXWindowFacts window{.windowId = 7, .title = "Shopping", .bounds = windowList()[1].bounds};

void apply(const FramePlan::Step& step) {
    if (const auto* position = std::get_if<FramePlan::Position>(&step)) {
        std::cout << "  position " << position->x << ", " << position->y << '\n';
        window.bounds->x = position->x;
        window.bounds->y = position->y;
    } else if (const auto* size = std::get_if<FramePlan::Size>(&step)) {
        std::cout << "  size " << size->width << " x " << size->height << '\n';
        window.bounds->width = size->width;
        window.bounds->height = size->height;
    }
}

} // namespace

int main() {
    const auto windows = WindowList::records(windowList(), 4242, 501, [](std::int32_t) {
        return WindowList::Owner{
            .bundleId = "com.example.notes", .isRegularApp = true, .startTime = startTime};
    });
    for (const WindowRecord& record : windows)
        Output::print(record, [](std::string_view line) { std::cout << line; });

    // The phone picks the front window and sends words back, which are read as strictly as any.
    const auto front = std::ranges::find(windows, true, &WindowRecord::front);
    if (front == windows.end() || !ArrangePolicy::mayArrange(front->appId))
        return 1; // asked before the display is divided
    const DisplayRecord display{.work = {.x = 0, .y = 25, .width = 1440, .height = 800}};
    WindowBounds half = display.work;
    half.width /= 2;
    const auto request = FrameRequest::words(*front, half).and_then(FrameRequest::parse);
    if (!request)
        return 1; // such as for an application without an identifier

    const WindowMove::Services services{
        .process = [](std::int32_t) -> std::optional<WindowMove::Process> {
            return WindowMove::Process{.bundleId = "com.example.notes", .startTime = startTime};
        },
        .windowList = windowList,
        .windows = [](std::int32_t) { return std::vector{window}; },
        .isResizable = [](std::size_t) { return true; },
        .apply = [](std::size_t, const FramePlan::Step& step) { apply(step); },
        .bounds = [](std::size_t) { return window.bounds; }};
    const auto moved = WindowMove::perform(*request, services);
    std::cout << (moved ? encodeJson(*moved).value() : std::string(rawText(moved.error()))) << '\n';
    return moved ? 0 : 1;
}
