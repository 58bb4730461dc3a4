#include "core/support/BundleIdentifier.h"

#include "core/support/Text.h"

namespace velmo::BundleIdentifier {

bool isOfVelmo(std::string_view identifier) {
    return Text::lowercased(identifier).starts_with(velmoPrefix);
}

bool isOneOf(std::string_view identifier, std::span<const std::string_view> table) {
    return Text::isOneOf(Text::lowercased(identifier), table);
}

} // namespace velmo::BundleIdentifier
