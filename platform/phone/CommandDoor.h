#pragma once

#include <boost/asio/io_context.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Listens on the bridge's socket for commands, for processes of this user alone.
class CommandDoor {
public:
    /// Returns the reply to a line, both without limits of their own.
    using Obey = std::function<std::string(std::string_view line)>;

    CommandDoor(boost::asio::io_context& context, Obey obey);
    ~CommandDoor();
    CommandDoor(const CommandDoor&) = delete;
    CommandDoor& operator=(const CommandDoor&) = delete;

    /// Listens on a socket with this path. Returns false if the path is too long, and on any error.
    [[nodiscard]] bool open(const std::string& path);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

/// Sends a line to the bridge and waits for the reply. Absent if no bridge serves, or none replies.
std::optional<std::string> askBridge(const std::string& path, std::string_view line);

} // namespace velmo
