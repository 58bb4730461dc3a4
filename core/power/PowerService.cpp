#include "core/power/PowerService.h"

#include "core/support/Text.h"

namespace velmo {

namespace {

constexpr std::size_t maxTeam = 16; ///< user-perceived characters

constexpr std::string_view signedByTeam =
    R"(anchor apple generic and certificate leaf[subject.OU] = ")";
constexpr std::string_view asClient =
    R"(" and (identifier "VelmoHelper" or identifier "io.velmo.host"))";
constexpr std::string_view asDaemon = R"(" and identifier "VelmoPowerDaemon")";

/// Tells whether the team may stand in a requirement, between quotes that nothing escapes. Every
/// scalar is checked, not every user-perceived character: a letter such as U+0D4E forms one
/// character with a quote that follows it.
bool isTeamIdentifier(std::string_view team) {
    if (team.empty() || Text::hasMoreCharactersThan(team, maxTeam))
        return false;
    for (const Text::Scalar& scalar : Text::Scalars(team)) {
        if (!Text::isLetter(scalar.value) && !Text::isNumber(scalar.value))
            return false;
    }
    return true;
}

std::optional<std::string> requirement(const std::optional<std::string>& team,
                                       std::string_view identity) {
    if (!team || !isTeamIdentifier(*team))
        return std::nullopt;
    std::string text(signedByTeam);
    text += *team;
    text += identity;
    return text;
}

} // namespace

std::optional<std::string> powerClientRequirement(const std::optional<std::string>& team) {
    return requirement(team, asClient);
}

std::optional<std::string> powerDaemonRequirement(const std::optional<std::string>& team) {
    return requirement(team, asDaemon);
}

} // namespace velmo
