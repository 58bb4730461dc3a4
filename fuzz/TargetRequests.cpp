#include "core/apps/ForceQuitPolicy.h"
#include "core/apps/TargetRequest.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The input is the words of a request to kill an application. An accepted request matches the
/// process that it names, and is read again as the same request.
void checkTargetRequests(Input input) {
    const auto request = TargetRequest::parse(input.words());
    if (!request)
        return;
    require(request->pid >= 1 && !request->appId.empty() && Text::isValidUtf8(request->appId));
    require(!Text::hasMoreCharactersThan(request->appId, 1024));
    require(ForceQuitPolicy::identityMatches(request->appId, request->appId, std::nullopt));
    require(ForceQuitPolicy::identityMatches(request->appId, std::nullopt, request->appId));

    std::vector<std::string> words{std::to_string(request->pid), request->appId};
    if (const auto& started = request->started) {
        require(!started->empty() && started->size() <= 20);
        require(std::ranges::all_of(*started, [](char c) { return c >= '0' && c <= '9'; }));
        require(!ForceQuitPolicy::startMatches(*started, std::nullopt));
        words.push_back(*started);
    }
    require(TargetRequest::parse(words) == request);
}

const Target targetRequestsTarget("TargetRequests", checkTargetRequests);

} // namespace

} // namespace velmo::Fuzz
