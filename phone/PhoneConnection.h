#pragma once

#include "core/support/Bytes.h"

#include <cstdint>
#include <string>

namespace velmo {

/// Why the bridge closes a page's connection: the status code of the WebSocket's close frame. Codes
/// from 4000 on are ours.
enum class PhoneClosing : std::uint16_t {
    leaving = 1001,   ///< the bridge ends
    malformed = 4000, ///< the page has sent what it must not send
    revoked = 4001,   ///< the device is let in no more
    replaced = 4002,  ///< another connection has taken the place of this silent one
};

struct PhoneMessage {
    bool isText = false;
    std::string content;
};

/// The WebSocket of one page. An implementation tells the `PhonePage` what happens.
class PhoneConnection {
public:
    virtual ~PhoneConnection() = default;

    /// Sends a message, and then calls `PhonePage::sent`. The bridge sends the next one only then.
    virtual void send(PhoneMessage message) = 0;

    /// Waits for one message, and hands it to `PhonePage::received`.
    virtual void receive() = 0;

    /// Ends the connection. The page is told nothing about it afterwards.
    virtual void close(PhoneClosing why) = 0;
};

} // namespace velmo
