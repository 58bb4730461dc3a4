#include "phone/PhoneBridge.h"

#include "phone/CookieHeader.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

constexpr std::string_view json = "application/json";

HttpReply plain(unsigned status, std::string_view text) {
    return {.status = status, .text = std::string(text) + "\n"};
}

HttpReply described(const Device& device) {
    return {.contentType = json,
            .text =
                encodeJson(DeviceLine{.name = device.name, .rights = device.rights}, Slashes::plain)
                    .value_or("")};
}

} // namespace

PhoneBridge::PhoneBridge(Services services, PhoneRecord record)
    : services_(std::move(services)),
      record_(std::move(record)),
      address_(record_.port, record_.outside),
      devices_({.random = services_.random, .hash = services_.hash}, record_.devices),
      codes_(services_.random) {
}

PhoneBridge::~PhoneBridge() {
    closePages();
}

HttpReply PhoneBridge::answer(const HttpRequest& request) {
    const bool isPost = request.method == "POST";
    if (auto refused = refusal(request, isPost))
        return *std::move(refused);
    if (request.target == "/admit")
        return isPost ? letIn(request) : plain(405, "This address takes POST alone.");
    if (isPost || (request.method != "GET" && request.method != "HEAD"))
        return plain(405, "This address takes GET alone.");
    if (request.target == "/device")
        return describe(request);
    if (request.target == socketPath)
        return plain(426, "This address takes a WebSocket.");
    return file(request);
}

std::expected<std::string, HttpReply> PhoneBridge::mayOpen(const HttpRequest& request) {
    if (auto refused = refusal(request, true))
        return std::unexpected(*std::move(refused));
    if (request.target != socketPath)
        return std::unexpected(plain(404, "There is no WebSocket at this address."));
    const auto cookie = cookieIn(request.cookie, cookieName());
    if (!cookie || devices_.find(*cookie, services_.wallTime()) == nullptr)
        return std::unexpected(plain(401, "This device has not been let in."));
    if (pages_.size() >= maxPages && longestSilent() == nullptr)
        return std::unexpected(plain(503, "There are as many connections as there may be."));
    return std::string(*cookie);
}

std::shared_ptr<PhonePage> PhoneBridge::open(const std::string& cookie,
                                             std::shared_ptr<PhoneConnection> connection) {
    const Device* const device = devices_.find(cookie, services_.wallTime());
    if (device == nullptr) {
        connection->close(PhoneClosing::revoked);
        return nullptr;
    }
    if (pages_.size() >= maxPages) {
        const auto silent = longestSilent();
        if (silent == nullptr) {
            connection->close(PhoneClosing::replaced);
            return nullptr;
        }
        silent->end(PhoneClosing::replaced);
    }
    const PhonePage::Services services{
        .sessions = services_.sessions,
        .awake = services_.awake,
        .steadyTime = services_.steadyTime,
        .closed = [this](PhonePage& page) { std::erase(pages_, page.shared_from_this()); }};
    pages_.push_back(std::make_shared<PhonePage>(services, *device, std::move(connection)));
    const auto page = pages_.back();
    page->begin();
    return page;
}

void PhoneBridge::gone(const std::shared_ptr<PhonePage>& page) {
    std::erase(pages_, page);
}

void PhoneBridge::closePages() {
    for (const auto& page : std::vector(pages_))
        page->end(PhoneClosing::leaving);
}

void PhoneBridge::powerChanged() {
    for (const auto& page : std::vector(pages_))
        page->tellPower();
}

std::string PhoneBridge::admit(DeviceRights rights) {
    return address_.page() + "#" + codes_.issue(rights, services_.steadyTime());
}

std::vector<Device> PhoneBridge::devices() const {
    return devices_.devices(services_.wallTime());
}

bool PhoneBridge::revoke(std::string_view name) {
    if (!devices_.remove(name) && isSaved_)
        return false;
    save();
    closePagesOf(name);
    return true;
}

void PhoneBridge::revokeAll() {
    devices_.clear();
    save();
    for (const auto& page : std::vector(pages_))
        page->end(PhoneClosing::revoked);
}

/// Returns the reply to a request that comes from anywhere but our own page.
std::optional<HttpReply> PhoneBridge::refusal(const HttpRequest& request, bool needsOrigin) const {
    if (!address_.isHost(request.host))
        return plain(421, "The page is not served under this name.");
    if (request.origin ? !address_.isOrigin(*request.origin) : needsOrigin)
        return plain(403, "Only the page itself may ask this.");
    return std::nullopt;
}

HttpReply PhoneBridge::file(const HttpRequest& request) const {
    const auto found = std::ranges::find(services_.files, request.target, &PageFile::path);
    if (found == services_.files.end())
        return plain(404, "There is nothing at this address.");
    if (request.ifNoneMatch == found->tag)
        return {.status = 304, .tag = found->tag};
    return {.contentType = found->contentType, .gzipped = found->gzipped, .tag = found->tag};
}

HttpReply PhoneBridge::describe(const HttpRequest& request) const {
    const Device* const device = deviceOf(request);
    return device == nullptr ? plain(401, "This device has not been let in.") : described(*device);
}

HttpReply PhoneBridge::letIn(const HttpRequest& request) {
    if (!attempts_.take(services_.steadyTime()))
        return plain(429, "There have been too many attempts. Wait a second.");
    // A page elsewhere can send this type only after it has asked for permission.
    const auto line = request.contentType == json
                          ? decodeRecordExactly<AdmissionLine>(request.body, maxBody)
                          : std::nullopt;
    if (!line)
        return plain(400, "This is not an admission.");
    const auto rights = codes_.take(line->code, services_.steadyTime());
    if (!rights)
        return plain(403, "The code is unknown, used or expired.");
    // The browser forgets its earlier cookie, so nothing needs the earlier device any more.
    if (const Device* const earlier = deviceOf(request))
        revoke(std::string(earlier->name));
    const std::string cookie = devices_.add(line->name, *rights, services_.wallTime());
    save();
    HttpReply reply = described(*devices_.find(cookie, services_.wallTime()));
    reply.setCookie = cookieHeader(cookie);
    return reply;
}

/// Browsers accept the prefix on an encrypted way alone, and then from no other name.
std::string_view PhoneBridge::cookieName() const {
    return address_.isEncrypted() ? "__Host-velmo-phone" : "velmo-phone";
}

std::string PhoneBridge::cookieHeader(std::string_view cookie) const {
    std::string header = std::string(cookieName()) + "=";
    header += cookie;
    header += "; Path=/; Max-Age=" + std::to_string(static_cast<long>(DeviceBook::life))
              + "; HttpOnly; SameSite=Strict";
    if (address_.isEncrypted())
        header += "; Secure";
    return header;
}

const Device* PhoneBridge::deviceOf(const HttpRequest& request) const {
    const auto cookie = cookieIn(request.cookie, cookieName());
    return cookie ? devices_.find(*cookie, services_.wallTime()) : nullptr;
}

/// Returns the page that has said nothing for the longest time; null if every page has said
/// something just now, as a page that a person looks at does.
std::shared_ptr<PhonePage> PhoneBridge::longestSilent() const {
    const auto silent =
        std::ranges::min_element(pages_, {}, [](const auto& page) { return page->lastHeard(); });
    const bool may =
        silent != pages_.end() && services_.steadyTime() - (*silent)->lastHeard() >= silence;
    return may ? *silent : nullptr;
}

void PhoneBridge::closePagesOf(std::string_view device) {
    for (const auto& page : std::vector(pages_)) {
        if (page->device().name == device)
            page->end(PhoneClosing::revoked);
    }
}

void PhoneBridge::save() {
    record_.devices = devices();
    isSaved_ = services_.save(record_);
}

} // namespace velmo
