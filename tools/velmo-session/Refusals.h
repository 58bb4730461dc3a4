#pragma once

#include "sessions/SessionCalls.h"

#include <string>

/// What the host's refusals mean, for people.
namespace velmo {

/// Returns the meaning of a refused call, such as "there is no such session".
std::string refusalText(SessionCall call, const SessionReplyLine& reply);

/// Returns the names of the programs that a session may run, separated by commas.
std::string permittedPrograms();

} // namespace velmo
