#include "phone/OneTimeCodes.h"

#include <algorithm>

namespace velmo {

std::string OneTimeCodes::issue(DeviceRights rights, SteadyTime now) {
    if (codes_.size() == maxCodes)
        codes_.pop_front();
    codes_.push_back({.text = newSecret(random_, codeBytes),
                      .rights = rights,
                      .expiry = SteadyTime{now.seconds + life}});
    return codes_.back().text;
}

std::optional<DeviceRights> OneTimeCodes::take(std::string_view code, SteadyTime now) {
    std::erase_if(codes_, [&](const Code& each) { return each.expiry <= now; });
    const auto found = std::ranges::find_if(
        codes_, [&](const Code& each) { return isSameSecret(each.text, code); });
    if (found == codes_.end())
        return std::nullopt;
    const DeviceRights rights = found->rights;
    codes_.erase(found);
    return rights;
}

} // namespace velmo
