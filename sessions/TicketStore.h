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

    /// Writes a new file of mode 0600. Tells whether it was written whole; false if the name is
    /// taken.
    [[nodiscard]] virtual bool write(const std::string& name, std::string_view content) = 0;

    /// Removes a file if it still exists.
    virtual void remove(const std::string& name) = 0;
};

} // namespace velmo
