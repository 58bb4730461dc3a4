#pragma once

#include <string>

namespace velmo {

/// Starts a session host that outlives this process and its terminal, by the velmo-session at this
/// path, and does not wait for it. The host serves once its socket can be connected to, and ends by
/// itself if another host was quicker. It gets none of this process's descriptors: a listening
/// socket would stay taken as long as the host lives.
void startSessionHost(const std::string& program);

} // namespace velmo
