#pragma once

#include "tools/velmo-session/DetachChoice.h"

#include <string>

namespace velmo {

/// Joins a session by its ticket, and returns the exit status once the view has ended.
int attach(const std::string& ticketFile, const DetachChoice& detachChoice = {});

} // namespace velmo
