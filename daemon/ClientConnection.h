#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velmo {

class Session;

/// Names a client inside the guard: given once per connection and never again, unlike an address,
/// which may return with another client behind it.
enum class ClientId : std::uint64_t {};

/// A connection that a client has opened and that does nothing until it is resumed.
class ClientConnection {
public:
    virtual ~ClientConnection() = default;

    [[nodiscard]] virtual ClientId id() const = 0;

    /// From now on the system rejects a peer that does not satisfy the code-signing requirement.
    /// False when the system finds the text malformed; the connection must then be refused.
    [[nodiscard]] virtual bool requireCodeSignature(const std::string& requirement) = 0;

    /// The object that answers the calls of `VelmoPowerProtocol`.
    virtual void exportSession(std::shared_ptr<Session> session) = 0;

    /// Called once, when the connection is gone for good.
    virtual void onInvalidation(std::function<void()> handler) = 0;

    virtual void resume() = 0;
};

} // namespace velmo
