#include "core/power/PowerService.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The team stands between quotes in a requirement, and must not be able to end them.
void checkSigningTeams(Input input) {
    const std::string team(input.rest());
    const auto client = powerClientRequirement(team);
    const auto daemon = powerDaemonRequirement(team);
    require(client.has_value() == daemon.has_value());
    if (!client)
        return;
    require(!team.empty() && !Text::hasMoreCharactersThan(team, 16));
    require(std::ranges::count(*client, '"') == 6 && std::ranges::count(*daemon, '"') == 4);
    for (const Text::Scalar& scalar : Text::Scalars(team))
        require(Text::isLetter(scalar.value) || Text::isNumber(scalar.value));
}

const Target signingTeamsTarget("SigningTeams", checkSigningTeams);

} // namespace

} // namespace velmo::Fuzz
