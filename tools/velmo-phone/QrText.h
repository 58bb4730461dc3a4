#pragma once

#include <optional>
#include <string>

namespace velmo {

/// Returns a QR code of the text as lines for a terminal, dark on light whatever the terminal's own
/// colours are. Absent if the text is too long for a QR code.
std::optional<std::string> qrText(const std::string& text);

} // namespace velmo
