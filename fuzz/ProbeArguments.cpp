#include "core/probes/FirewallProbe.h"
#include "core/probes/PointerTarget.h"
#include "core/probes/SecretRequest.h"
#include "core/probes/SetupPermissionReport.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// Every probe reads the same arguments.
void checkProbeArguments(Input input) {
    const auto words = input.words();
    if (const auto point = PointerTarget::parse(words)) {
        require(std::max(point->x, point->y) <= PointerTarget::limit);
        require(std::min(point->x, point->y) >= -PointerTarget::limit);
        const std::vector again{std::to_string(point->x), std::to_string(point->y)};
        require(PointerTarget::parse(again) == point);
    }
    if (const auto request = SecretRequest::parse(words)) {
        require(SecretRequest::validAccount(request->account) && words[1] == request->account);
        require(request->account.size() <= 32 && words[0] == rawText(request->verb));
    }
    if (const auto path = FirewallProbe::parseArgs(words)) {
        require(path->starts_with('/') && !path->contains("/../") && Text::isValidUtf8(*path));
        require(!path->contains('\0') && !Text::hasMoreCharactersThan(*path, 1024));
        const auto runs = FirewallProbe::invocations(*path);
        require(std::ranges::count(runs.back(), *path) == 1);
    }
    const auto arguments = SetupPermissionReport::parseArgs(words);
    require(arguments.ok == (words.empty() || arguments.ask));
}

const Target probeArgumentsTarget("ProbeArguments", checkProbeArguments);

} // namespace

} // namespace velmo::Fuzz
