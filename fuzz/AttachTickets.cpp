#include "core/terminal/AttachTicket.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkAttachTickets(Input input) {
    using namespace PtyAttach;
    const std::string_view json = input.rest();
    const auto ticket = parseTicket(json);
    require(!ticket || json.front() == '{');
    if (json.starts_with('{'))
        requireSpellingIsIgnored(json, parseTicket);
    if (!ticket)
        return;
    require(isToken(ticket->token) && isSessionId(ticket->session));
    require(parseTicket(encodeJson(*ticket).value()) == ticket);
}

const Target attachTicketsTarget("AttachTickets", checkAttachTickets);

} // namespace

} // namespace velmo::Fuzz
