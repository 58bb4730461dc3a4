#pragma once

#include <string>
#include <string_view>

namespace velmo::DevTerminal {

/// Returns the text quoted as one word for a POSIX shell: it's becomes 'it'\''s'.
std::string shellQuote(std::string_view text);

/// Returns the text as an AppleScript string literal.
std::string appleScriptString(std::string_view text);

} // namespace velmo::DevTerminal
