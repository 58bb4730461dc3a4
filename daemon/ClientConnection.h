#pragma once

#include "core/power/VelmoPowerProtocol.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmo {

/// Names a client to the guard. Every connection gets a number of its own, which is not used again,
/// unlike an address, which may return with another client behind it.
enum class ClientId : std::uint64_t {};

/// A connection that a client has opened and that does nothing until it is resumed.
class ClientConnection {
public:
    virtual ~ClientConnection() = default;

    /// Returns the number that the guard knows the client by.
    [[nodiscard]] virtual ClientId id() const = 0;

    // The peer's process, for people to read. No rule depends on it: the number may belong to
    // another process by now, and any program may have any name.

    /// Returns the peer's process id; absent where the system does not tell.
    [[nodiscard]] virtual std::optional<std::int64_t> processId() const = 0;

    /// Returns the file name of the peer's executable; absent where the system does not tell.
    [[nodiscard]] virtual std::optional<std::string> programName() const = 0;

    /// Makes the system reject a peer that does not satisfy the code-signing requirement. Returns
    /// false if the system finds the text malformed; the connection must then be refused.
    [[nodiscard]] virtual bool requireCodeSignature(const std::string& requirement) = 0;

    /// Lets the session answer the client's calls.
    virtual void exportSession(std::shared_ptr<VelmoPowerProtocol> session) = 0;

    /// Sets the handler that is called once, on any thread, when the connection is gone for good.
    virtual void onInvalidation(std::function<void()> handler) = 0;

    /// Lets calls come in. Until then the connection does nothing.
    virtual void resume() = 0;
};

} // namespace velmo
