#pragma once

#include <string>
#include <string_view>

namespace velmo {

/// Begins the name of the link by which a terminal session finds its viewer's SSH agent; the
/// session's id follows.
inline constexpr std::string_view agentLinkPrefix = "ssh-";

/// Keeps the files of tickets in the private folder, and the links to SSH agents.
class TicketStore {
public:
    virtual ~TicketStore() = default;

    /// Returns the path of the folder, links resolved.
    [[nodiscard]] virtual std::string folder() const = 0;

    /// Writes a new file of mode 0600. Tells whether it was written whole; false if the name is
    /// taken.
    [[nodiscard]] virtual bool write(const std::string& name, std::string_view content) = 0;

    /// Makes a link to the target, or points the link of this name anew. Tells whether the link
    /// leads there now.
    [[nodiscard]] virtual bool link(const std::string& name, const std::string& target) = 0;

    /// Removes a file or link if it still exists.
    virtual void remove(const std::string& name) = 0;
};

} // namespace velmo
