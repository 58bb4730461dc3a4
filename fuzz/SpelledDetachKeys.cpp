#include "core/terminal/SpelledDetachKey.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The input is runs of typed bytes, each with the time that passes before the run, in units of 10
/// ms. Nothing reaches the program that was not typed, in the order in which it was typed; and all
/// of it does, unless Control-] was typed in one of its spellings.
void checkSpelledDetachKeys(Input input) {
    PtyAttach::SpelledDetachKey key;
    Bytes all;
    Bytes arrived;
    bool detached = false;
    std::int64_t now = 0;
    const auto arrive = [&](const Bytes& bytes) {
        arrived.insert(arrived.end(), bytes.begin(), bytes.end());
    };
    while (!input.isEmpty()) {
        Bytes typed;
        do {
            typed.push_back(input.byte());
        } while (!input.isEmpty() && input.flag());
        now += std::int64_t{10} * (input.byte() % 128);
        const auto result = key.feed(typed, now);
        all.insert(all.end(), typed.begin(), typed.end());
        arrive(result.forward);
        detached = detached || result.detach;
        require(!key.deadlineMs() || *key.deadlineMs() > now);
    }
    arrive(key.tick(now + PtyAttach::DetachKey::timeoutMs));
    require(!key.deadlineMs());
    auto next = all.begin();
    for (const std::uint8_t byte : arrived) {
        next = std::find(next, all.end(), byte);
        require(next++ != all.end());
    }
    const bool isSpelt = textOf(all).contains("93");
    const bool isByte = std::ranges::count(all, PtyAttach::DetachKey::escape) > 0;
    require(isSpelt || isByte || (arrived == all && !detached));
}

const Target spelledDetachKeysTarget("SpelledDetachKeys", checkSpelledDetachKeys);

} // namespace

} // namespace velmo::Fuzz
