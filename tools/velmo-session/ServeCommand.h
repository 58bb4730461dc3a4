#pragma once

namespace velmo {

enum class ServeMode {
    foreground, ///< until it is told to stop; logs to standard error
    background, ///< until nobody needs it; logs to a file in the private folder
};

/// Runs the session host of this user. Returns the exit status.
int serve(ServeMode mode);

} // namespace velmo
