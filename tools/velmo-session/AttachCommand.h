#pragma once

#include <string>

namespace velmo {

/// Joins a session by its ticket, and returns the exit status once the view has ended.
int attach(const std::string& ticketFile);

} // namespace velmo
