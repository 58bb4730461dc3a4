#include "phone/DeviceBook.h"

#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"

#include <algorithm>

namespace velmo {

namespace {

/// A cookie that seems to come from the future is refused too: the clock was set back.
bool isGood(const Device& device, WallTime now) {
    const double age = now.sinceEpoch - device.since;
    return age >= 0 && age < DeviceBook::life;
}

std::string cleaned(std::string_view name) {
    const std::string label = PtyAttach::sanitizeLabel(name);
    const std::string_view shown = Text::trimmed(label, Text::isBlankOrNewline);
    return std::string(shown.empty() ? DeviceBook::unnamed
                                     : Text::prefix(shown, DeviceBook::maxName));
}

} // namespace

DeviceBook::DeviceBook(Services services, std::vector<Device> devices)
    : services_(std::move(services)), devices_(std::move(devices)) {
}

std::string DeviceBook::add(std::string_view name, DeviceRights rights, WallTime now) {
    std::erase_if(devices_, [&](const Device& device) { return !isGood(device, now); });
    if (devices_.size() >= maxDevices)
        devices_.erase(devices_.begin(),
                       devices_.end() - static_cast<std::ptrdiff_t>(maxDevices - 1));
    const std::string base = cleaned(name);
    std::string unique = base;
    for (int number = 2; has(unique); ++number)
        unique = base + " " + std::to_string(number);
    std::string cookie = newSecret(services_.random, cookieBytes);
    devices_.push_back({.name = std::move(unique),
                        .secret = hexText(services_.hash(bytesOf(cookie))),
                        .rights = rights,
                        .since = now.sinceEpoch});
    return cookie;
}

const Device* DeviceBook::find(std::string_view cookie, WallTime now) const {
    const std::string secret = hexText(services_.hash(bytesOf(cookie)));
    const auto found = std::ranges::find_if(devices_, [&](const Device& device) {
        return isSameSecret(device.secret, secret) && isGood(device, now);
    });
    return found == devices_.end() ? nullptr : &*found;
}

bool DeviceBook::remove(std::string_view name) {
    return std::erase_if(devices_, [&](const Device& device) { return device.name == name; }) > 0;
}

std::vector<Device> DeviceBook::devices(WallTime now) const {
    std::vector<Device> good = devices_;
    std::erase_if(good, [&](const Device& device) { return !isGood(device, now); });
    return good;
}

bool DeviceBook::has(std::string_view name) const {
    return std::ranges::find(devices_, name, &Device::name) != devices_.end();
}

} // namespace velmo
