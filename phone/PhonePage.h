#pragma once

#include "core/support/Bytes.h"
#include "core/support/Time.h"
#include "phone/AwakeSwitch.h"
#include "phone/DeviceBook.h"
#include "phone/PhoneCalls.h"
#include "phone/PhoneConnection.h"
#include "phone/SessionLink.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// The bridge's side of one open page: does what the page asks for, as far as its device may, and
/// relays the frames of at most one session. What the bridge keeps for a page is bounded, whatever
/// the page, the host and the network do:
///
/// - output: at most `window` bytes are on their way to the page or not shown yet. Beyond that the
///   bridge reads nothing more from the host, which has a rule for slow viewers.
/// - typing: at most `maxTyped` bytes, and one message, wait for the host. Beyond that the bridge
///   reads nothing more from the page.
/// - messages: at most `maxCalls` calls and messages wait, for the host or for the page to read.
///   Beyond that the bridge reads nothing more from either.
class PhonePage : public std::enable_shared_from_this<PhonePage> {
public:
    static constexpr std::size_t window = std::size_t{256} << 10;   ///< bytes
    static constexpr std::size_t maxOutput = std::size_t{64} << 10; ///< bytes of one message
    static constexpr std::size_t maxTyped = std::size_t{256} << 10; ///< bytes
    static constexpr std::size_t maxCalls = 8;

    struct Services {
        SessionLink& sessions;
        AwakeSwitch* awake = nullptr; ///< null where the computer's power can't be reached
        std::function<SteadyTime()> steadyTime;
        std::function<void(PhonePage&)> closed; ///< called when the page itself ends its connection
    };

    PhonePage(const Services& services, Device device, std::shared_ptr<PhoneConnection> connection);

    /// Greets the page and begins to listen to it.
    void begin();

    // Report events of the connection.
    void received(const PhoneMessage& message);
    void sent();

    /// Tells the page the computer's power, if it has asked for that before.
    void tellPower();

    /// Ends the connection and everything that belongs to it.
    void end(PhoneClosing why);

    [[nodiscard]] const Device& device() const { return device_; }

    /// Returns when the page last sent something.
    [[nodiscard]] SteadyTime lastHeard() const { return lastHeard_; }

private:
    void made(const PhoneCallLine& call);
    void list();
    void watch(const std::string& session);
    void watched(const std::string& session, std::unique_ptr<SessionStream> stream);
    void shown(std::uint64_t bytes);
    void leave();
    void start(const PhoneCallLine& call);
    void endSession(const std::string& session);
    void power();
    void turnAwake(bool on);
    void typed(std::string_view frames);

    void readOutput();
    void outputRead(ByteView bytes);

    void refuse(PhoneCall call, std::string_view reason);
    void tell(const PhoneEventLine& event);
    void send(PhoneMessage message);
    void sendNext();
    void listen();

    /// Wraps a callback of the link, so that it does nothing once this page is gone.
    template<class Callback>
    auto ifAlive(Callback callback);

    /// Does the same for a callback that also means nothing once another session is watched.
    template<class Callback>
    auto ifStillWatching(Callback callback);

    /// Wraps the callback of a call that is counted while it is under way.
    template<class Callback>
    auto counted(Callback callback);

    Services services_;
    Device device_;
    std::shared_ptr<PhoneConnection> connection_; ///< null once it has ended
    SteadyTime lastHeard_;

    std::unique_ptr<SessionStream> stream_; ///< null while the page watches no session
    std::string session_;                   ///< that the stream belongs to
    std::uint64_t watching_ = 0;            ///< a new number for each stream and for its end
    bool isReading_ = false;
    std::uint64_t relayed_ = 0; ///< bytes of output since the event "watching"
    std::uint64_t shown_ = 0;   ///< of them, shown by the page
    std::size_t typed_ = 0;     ///< bytes that wait for the host

    std::deque<PhoneMessage> toSend_; ///< the first is being sent
    std::size_t callsUnderWay_ = 0;
    bool isListening_ = false;
    bool wantsPower_ = false;
};

} // namespace velmo
