#pragma once

#include <span>
#include <string_view>

/// Judges identifiers of application bundles, which the platform compares without regard to letter
/// case. An identifier may be any bytes, of any length.
namespace velmo::BundleIdentifier {

/// How the identifiers of the product's own applications begin. The final dot belongs to it.
inline constexpr std::string_view velmoPrefix = "io.velmo.";

bool isOfVelmo(std::string_view identifier);

/// Tells whether the table, which is in lower case, has the identifier.
bool isOneOf(std::string_view identifier, std::span<const std::string_view> table);

} // namespace velmo::BundleIdentifier
