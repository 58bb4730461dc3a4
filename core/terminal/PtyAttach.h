#pragma once

#include "core/terminal/AttachLabels.h"
#include "core/terminal/AttachTicket.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/DetachKey.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

/// The attach client: what a terminal window runs to join a session that lives on the host. The
/// client reads a ticket (AttachTicket.h), connects to the socket named there and greets the host.
/// Then it relays (AttachWire.h) until the user detaches (DetachKey.h), the program ends or the
/// host goes away, and tells the user which (AttachLabels.h). The caller provides the socket, the
/// terminal's raw mode and the loop.
namespace velmo::PtyAttach {

/// The word that makes the product's executable the attach client. The client's arguments follow.
inline constexpr std::string_view mode = "pty-attach";
inline constexpr std::string_view ticketOption = "--ticket-file";

/// Asks to join the session of a ticket.
struct TicketArguments {
    std::string path; ///< of the ticket's file

    bool operator==(const TicketArguments&) const = default;
};

/// Asks to print `probeReply` and end.
struct ProbeArguments {
    bool operator==(const ProbeArguments&) const = default;
};

using Arguments = std::variant<TicketArguments, ProbeArguments>;

/// Reads "--probe" alone, or "--ticket-file" and a path that `PathText::isCleanAbsolute` accepts.
std::optional<Arguments> parseArguments(std::span<const std::string> args);

inline constexpr std::string_view probeReply = R"({"ok":true,"v":1})";

/// The client writes this to the terminal at the end, whatever the reason, to undo what the program
/// may have left switched on.
inline constexpr std::string_view reset = "\0337"       // save the cursor, which the next moves
                                          "\033[?1049l" // leave the alternate screen
                                          "\033[?25h"   // show the cursor
                                          "\033[?2004l" // bracketed paste
                                          "\033[?1000l" // mouse: clicks,
                                          "\033[?1002l" //   drags,
                                          "\033[?1003l" //   every movement,
                                          "\033[?1006l" //   long coordinates
                                          "\033[?1004l" // focus reports
                                          "\033[<u"     // keyboard enhancements
                                          "\033[?1l"    // usual cursor keys
                                          "\033>"       // usual keypad
                                          "\033[0m"     // colours and attributes
                                          "\r\n";
static_assert(reset.size() == 81);

} // namespace velmo::PtyAttach
