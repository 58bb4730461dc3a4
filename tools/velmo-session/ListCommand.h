#pragma once

namespace velmo {

/// The request of `velmo-session list`.
struct ListRequest {
    bool isJson = false;
    bool isWatched = false; ///< prints the list again whenever it has changed
};

/// Prints the sessions; none if no host serves, which is not an error. Returns the exit status. A
/// watched list ends with a signal, or once it can't be written any more.
int list(const ListRequest& request);

} // namespace velmo
