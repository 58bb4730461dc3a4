#pragma once

#include <string_view>

namespace velmo {

/// Makes the session host a service of this user, which the system starts at log-in and keeps, ends
/// that, or prints how things are: "install", "remove" or "status". Returns the exit status.
int service(std::string_view what);

} // namespace velmo
