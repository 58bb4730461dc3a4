#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

/// Secrets in the form in which they travel: lower-case hexadecimal digits.
namespace velmo {

/// Fills the span with unguessable bytes.
using FillWithRandomBytes = std::function<void(std::span<std::uint8_t>)>;

/// Returns the SHA-256 of the bytes.
using Sha256 = std::function<Bytes(ByteView)>;

std::string hexText(ByteView bytes);

/// Returns a new secret of so many random bytes.
std::string newSecret(const FillWithRandomBytes& random, std::size_t bytes);

/// Compares two texts in a time that does not depend on where they differ.
bool isSameSecret(std::string_view one, std::string_view other);

} // namespace velmo
