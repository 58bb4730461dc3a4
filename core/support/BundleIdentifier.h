#pragma once

#include <span>
#include <string_view>

/// Identifiers of application bundles, which the platform compares without regard to letter case.
/// They are taken as they come: any bytes, of any length.
namespace velmo::BundleIdentifier {

/// What the product's own applications begin with. The final dot belongs to it.
inline constexpr std::string_view velmoPrefix = "io.velmo.";

bool isOfVelmo(std::string_view identifier);

/// The table is in lower case.
bool isOneOf(std::string_view identifier, std::span<const std::string_view> table);

} // namespace velmo::BundleIdentifier
