#include "core/support/Text.h"
#include "core/terminal/Pty.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

/// Keys and values, a line each.
void checkChildEnvironments(Input input) {
    Pty::Environment given;
    while (!input.isEmpty()) {
        const std::string_view key = input.line();
        given.insert_or_assign(std::string(key), std::string(input.line()));
    }
    const auto child = Pty::childEnvironment(given);
    for (const auto& [key, value] : child) {
        require(!key.contains('=') && !key.contains('\0') && !value.contains('\0'));
        require(Text::isOneOf(key, Pty::passed) || key.starts_with("LC_") || key == "TERM"
                || key == "COLORTERM");
    }
    require(child.contains("PATH") && child.at("TERM") == "xterm-256color");
    require(child.contains("LANG") || child.contains("LC_ALL") || child.contains("LC_CTYPE"));
    require(Pty::childEnvironment(child) == child);
}

const Target childEnvironmentsTarget("ChildEnvironments", checkChildEnvironments);

} // namespace

} // namespace velmo::Fuzz
