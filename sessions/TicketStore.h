#pragma once

#include <string>
#include <string_view>

namespace velmo {

/// Keeps the files of tickets in the private folder.
class TicketStore {
public:
    virtual ~TicketStore() = default;

    /// Returns the path of the folder, links resolved.
    [[nodiscard]] virtual std::string folder() const = 0;

    /// Writes a file of mode 0600 that does not exist yet. Tells whether it is there, whole.
    [[nodiscard]] virtual bool write(const std::string& name, std::string_view content) = 0;

    /// Removes a file, if it is still there.
    virtual void remove(const std::string& name) = 0;
};

} // namespace velmo
