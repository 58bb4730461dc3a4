#include "core/terminal/DetachKey.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The input is runs of typed bytes, each with the time that passes before the run, in units of 100
/// ms. The same bytes must reach the program if a run comes byte by byte and if it comes all at
/// once.
void checkDetachKeys(Input input) {
    PtyAttach::DetachKey oneByOne;
    PtyAttach::DetachKey atOnce;
    std::int64_t now = 0;
    bool escaped = false;
    while (!input.isEmpty()) {
        Bytes typed;
        do {
            typed.push_back(input.byte());
        } while (!input.isEmpty() && input.flag());
        now += std::int64_t{100} * (input.byte() % 16);

        Bytes forwarded = oneByOne.tick(now);
        bool detached = false;
        for (std::size_t i = 0; i < typed.size() && !detached; ++i) {
            const auto result = oneByOne.feed(ByteView(typed).subspan(i, 1), now);
            forwarded.insert(forwarded.end(), result.forward.begin(), result.forward.end());
            detached = result.detach;
        }
        const auto result = atOnce.feed(typed, now);
        require(result.forward == forwarded && result.detach == detached);
        escaped = escaped || std::ranges::count(typed, PtyAttach::DetachKey::escape) > 0;
        require(escaped || (forwarded == typed && !detached));
    }
}

const Target detachKeysTarget("DetachKeys", checkDetachKeys);

} // namespace

} // namespace velmo::Fuzz
