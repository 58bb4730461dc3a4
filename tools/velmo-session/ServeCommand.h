#pragma once

namespace velmo {

enum class ServeMode {
    foreground, ///< runs until it is told to stop; logs to standard error
    background, ///< ends after being idle for a while; logs to a file in the private folder
};

/// Runs the session host of this user. Returns the exit status.
int serve(ServeMode mode);

} // namespace velmo
