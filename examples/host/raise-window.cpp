/// Raises the window that the phone picks from the list: a minimized one, of an application behind
/// another. The Mac is a stub that prints the steps that it would take.

#include "core/output/Output.h"
#include "core/windows/WindowList.h"
#include "core/windows/WindowRaise.h"

#include <iostream>
#include <string_view>

using namespace velmo;

namespace {

constexpr WindowBounds place{.x = 200, .y = 100, .width = 900, .height = 700};

/// Notes has a minimized window, and Clock is in front.
struct Mac {
    std::int32_t frontmost = 502;
    std::vector<CGWindowRow> rows{
        {.id = 8, .pid = 502, .owner = "Clock", .bounds = place, .onScreen = true},
        {.id = 7, .pid = 501, .owner = "Notes", .title = "Shopping", .bounds = place}};
    AXWindowFacts notes{.title = "Shopping", .bounds = place, .minimized = true};

    std::vector<WindowRecord> windows() const {
        auto records = WindowList::records(rows, 4242, frontmost, [](std::int32_t pid) {
            return WindowList::Owner{.bundleId = app(pid).bundleId, .isRegularApp = true};
        });
        records.back().minimized = notes.minimized; // accessibility alone tells
        return records;
    }

    /// On a Mac: NSRunningApplication, and the start time from the system's process list.
    static AppProcess app(std::int32_t pid) {
        return {.bundleId = pid == 501 ? "com.example.notes" : "com.example.clock"};
    }

    /// On a Mac: AXUIElementSetAttributeValue, AXUIElementPerformAction, NSRunningApplication.
    void apply(WindowRaise::Step step) {
        std::cout << "  " << rawText(step) << '\n';
        if (step == WindowRaise::Step::unminimize)
            notes.minimized = false;
        else if (step == WindowRaise::Step::raise)
            rows[1].onScreen = !notes.minimized;
        else
            frontmost = 501;
    }
};

} // namespace

int main() {
    Mac mac;
    const auto print = [](std::string_view line) { std::cout << line; };
    for (const WindowRecord& record : mac.windows())
        Output::print(record, print);

    // The phone sends the words of a record back. They are read as strictly as any.
    const auto request = WindowRequest::words(mac.windows().back()).and_then(WindowRequest::parse);
    if (!request)
        return 1; // such as for an application without an identifier

    const auto raised = WindowRaise::perform(
        *request, {.process = [](std::int32_t pid) { return Mac::app(pid); },
                   .windowList = [&] { return mac.rows; },
                   .windows = [&](std::int32_t) { return std::vector{mac.notes}; },
                   .apply = [&](std::size_t, WindowRaise::Step step) { mac.apply(step); },
                   .settle = [] {}, // on a Mac: some tenths of a second
                   .frontmostPid = [&] { return mac.frontmost; }});
    std::cout << (raised ? encodeJson(*raised).value() : std::string(rawText(raised.error())))
              << '\n';
    return raised && raised->raised ? 0 : 1;
}
