#pragma once

#include "core/support/Time.h"
#include "phone/AttemptLimit.h"
#include "phone/DeviceBook.h"
#include "phone/HttpExchange.h"
#include "phone/OneTimeCodes.h"
#include "phone/PhoneAddress.h"
#include "phone/PhonePage.h"
#include "phone/PhoneRecord.h"
#include "phone/SessionLink.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Serves the page and lets devices in. All calls come on one thread.
///
/// A device shows a one-time code once and gets a cookie, by which it opens the WebSocket of the
/// page (`PhonePage`). Every request must come from the address at which the page is reached, so
/// that a page elsewhere can neither ask for a cookie nor use one.
///
///     GET   a file of the page                      200, 304, 404
///     POST  /admit   {"code":"...","name":"..."}     200, 400, 403, 429
///     GET   /device                                  200, 401
///     GET   /socket  the WebSocket                   101, 401, 403, 503
class PhoneBridge {
public:
    /// Everything outside that the bridge uses. The references must outlive the bridge.
    struct Services {
        SessionLink& sessions;
        AwakeSwitch* awake = nullptr; ///< null where the computer's power can't be reached
        std::span<const PageFile> files;
        FillWithRandomBytes random;
        Sha256 hash;
        std::function<SteadyTime()> steadyTime;
        std::function<WallTime()> wallTime;
        /// Called when the record has changed. Tells whether the record was written down.
        std::function<bool(const PhoneRecord&)> save;
    };

    static constexpr std::size_t maxPages = 32;  ///< open connections
    static constexpr std::size_t maxBody = 1024; ///< bytes of a request's body
    static constexpr double silence = 10;        ///< seconds after which a page may be replaced
    static constexpr std::string_view socketPath = "/socket";

    /// The record has a port.
    PhoneBridge(Services services, PhoneRecord record);
    PhoneBridge(const PhoneBridge&) = delete;
    PhoneBridge& operator=(const PhoneBridge&) = delete;
    ~PhoneBridge();

    /// Answers a request that does not open a WebSocket.
    HttpReply answer(const HttpRequest& request);

    /// Judges a request that opens a WebSocket. Returns the cookie that `open` takes, or the reply
    /// that refuses the request.
    std::expected<std::string, HttpReply> mayOpen(const HttpRequest& request);

    /// Begins to serve a page, once its WebSocket is open. Returns null, and closes the
    /// connection, if its device is let in no more or if there are too many pages.
    std::shared_ptr<PhonePage> open(const std::string& cookie,
                                    std::shared_ptr<PhoneConnection> connection);

    /// Reports that the connection of a page has ended by itself.
    void gone(const std::shared_ptr<PhonePage>& page);

    /// Closes every page, because the bridge ends.
    void closePages();

    /// Reports that the switch would tell something new.
    void powerChanged();

    /// Makes a one-time code and returns the address that lets one device in with it.
    std::string admit(DeviceRights rights);

    [[nodiscard]] std::vector<Device> devices() const;

    /// Lets a device in no more, and closes its pages. Returns false if no device has this name.
    /// Repeated for the same name after the record could not be written down, writes it again.
    bool revoke(std::string_view name);
    void revokeAll();

    /// Returns whether the record is written down as it is. Otherwise a bridge that is started anew
    /// knows nothing of the last change.
    [[nodiscard]] bool isSaved() const { return isSaved_; }

private:
    [[nodiscard]] std::optional<HttpReply> refusal(const HttpRequest& request,
                                                   bool needsOrigin) const;
    [[nodiscard]] HttpReply file(const HttpRequest& request) const;
    [[nodiscard]] HttpReply describe(const HttpRequest& request) const;
    HttpReply letIn(const HttpRequest& request);
    [[nodiscard]] std::string_view cookieName() const;
    [[nodiscard]] std::string cookieHeader(std::string_view cookie) const;
    [[nodiscard]] const Device* deviceOf(const HttpRequest& request) const;
    [[nodiscard]] std::shared_ptr<PhonePage> longestSilent() const;
    void closePagesOf(std::string_view device);
    void save();

    Services services_;
    PhoneRecord record_;
    PhoneAddress address_;
    DeviceBook devices_;
    OneTimeCodes codes_;
    AttemptLimit attempts_;
    std::vector<std::shared_ptr<PhonePage>> pages_;
    bool isSaved_ = true;
};

/// What a browser sends to be let in.
struct AdmissionLine {
    std::string code;
    std::string name; ///< for people: what kind of device it is

    static constexpr auto fields =
        std::tuple{field("code", &AdmissionLine::code), field("name", &AdmissionLine::name)};
    bool operator==(const AdmissionLine&) const = default;
};

/// What a device learns about itself.
struct DeviceLine {
    std::string name;
    DeviceRights rights = DeviceRights::view;

    static constexpr auto fields =
        std::tuple{field("name", &DeviceLine::name), field("rights", &DeviceLine::rights)};
    bool operator==(const DeviceLine&) const = default;
};

} // namespace velmo
