#include "core/terminal/PtyAttach.h"

#include "core/support/PathText.h"

namespace velmo::PtyAttach {

std::optional<Arguments> parseArguments(std::span<const std::string> args) {
    if (args.size() == 1 && args[0] == "--probe")
        return ProbeArguments{};
    if (args.size() == 2 && args[0] == ticketOption && PathText::isCleanAbsolute(args[1]))
        return TicketArguments{args[1]};
    return std::nullopt;
}

} // namespace velmo::PtyAttach
