#include "core/apps/AudioOutputs.h"
#include "core/apps/DockAutohideRequest.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// Every tool reads the same words.
void checkAppArguments(Input input) {
    const auto words = input.words();
    if (const auto id = AudioOutputs::parseSetArgs(words)) {
        require(words == std::vector{*id} && !id->starts_with('-') && id->size() <= 200);
        require(std::ranges::all_of(*id, [](char c) { return c >= ' ' && c < '\x7F'; }));
    }
    if (const auto request = DockAutohideRequest::parse(words)) {
        const auto* set = std::get_if<DockAutohideRequest::Set>(&request->action);
        require(words.size() == (set == nullptr ? 1U : 2U));
        require(set == nullptr || words[1] == (set->autohide ? "1" : "0"));
    }
}

const Target appArgumentsTarget("AppArguments", checkAppArguments);

} // namespace

} // namespace velmo::Fuzz
