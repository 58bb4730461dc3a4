#pragma once

#include "core/support/Bytes.h"
#include "core/support/Json.h"
#include "core/terminal/PtyFrame.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The host's side of the attach wire's control messages (core/terminal/AttachWire.h).
namespace velmo::PtyAttach {

/// The messages of a client.
namespace client {

struct Hello {
    std::string token;
    PtyFrame::Size size{};

    bool operator==(const Hello&) const = default;
};

struct Resize {
    PtyFrame::Size size{};

    bool operator==(const Resize&) const = default;
};

/// The client leaves and the session goes on: the user has detached, or the window was closed.
struct Leave {
    bool operator==(const Leave&) const = default;
};

/// A message that this host does not know, to be ignored.
struct Other {
    bool operator==(const Other&) const = default;
};

} // namespace client

using ClientMessage = std::variant<client::Hello, client::Resize, client::Leave, client::Other>;

/// Returns the client's message, with sizes clamped. Returns nothing for a "hello" of another
/// version or without a token, and for a "hello" or "resize" without two integers for the size.
std::optional<ClientMessage> clientMessage(const JsonObject& object);

/// Returns the host's message "ready", with a label that tells a person who detaches how to
/// continue the session: by its name, or by its id if a shell would not read the name as one word.
Bytes readyFrame(std::string_view name, std::string_view id);

// Return the frames of the host's messages "exit" and "error".
Bytes exitFrame(int code);
Bytes errorFrame(std::string_view code);

} // namespace velmo::PtyAttach
