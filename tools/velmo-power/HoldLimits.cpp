#include "tools/velmo-power/HoldLimits.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <vector>

namespace velmo {

namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;
constexpr double maxDuration = 3650 * day;
constexpr double endOfYear9999 = 253'402'300'800; ///< seconds since 1970

std::optional<double> secondsPer(char unit) {
    switch (unit) {
    case 'd':
        return day;
    case 'h':
        return hour;
    case 'm':
        return minute;
    case 's':
        return 1;
    default:
        return std::nullopt;
    }
}

std::string twoDigits(std::int64_t value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

std::tm localTime(WallTime time) {
    const auto seconds = static_cast<std::time_t>(time.sinceEpoch);
    std::tm result{};
    ::localtime_r(&seconds, &result);
    return result;
}

} // namespace

std::optional<double> parseDuration(std::string_view text) {
    // A number alone counts seconds.
    if (const auto seconds = Decimal::parseUnsigned<std::int32_t>(text))
        return *seconds > 0 && *seconds <= maxDuration ? std::optional<double>(*seconds)
                                                       : std::nullopt;
    double total = 0;
    while (!text.empty()) {
        const auto digits =
            static_cast<std::size_t>(std::ranges::find_if_not(text, Ascii::isDigit) - text.begin());
        const auto number = Decimal::parseUnsigned<std::int32_t>(text.substr(0, digits));
        const auto unit = digits < text.size() ? secondsPer(text[digits]) : std::nullopt;
        if (!number || !unit)
            return std::nullopt;
        total += *number * *unit;
        text.remove_prefix(digits + 1);
    }
    return total > 0 && total <= maxDuration ? std::optional(total) : std::nullopt;
}

std::optional<int> parseTimeOfDay(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon > 2 || text.size() != colon + 3)
        return std::nullopt;
    const auto hours = Decimal::parseUnsigned<int>(text.substr(0, colon));
    const auto minutes = Decimal::parseUnsigned<int>(text.substr(colon + 1));
    if (!hours || !minutes || *hours > 23 || *minutes > 59)
        return std::nullopt;
    return *hours * 60 + *minutes;
}

WallTime nextTimeOfDay(int minutes, WallTime now) {
    const auto onDay = [&](int daysAhead) {
        std::tm moment = localTime(now);
        moment.tm_mday += daysAhead;
        moment.tm_hour = minutes / 60;
        moment.tm_min = minutes % 60;
        moment.tm_sec = 0;
        moment.tm_isdst = -1; // mktime finds out: daylight saving differs from day to day
        return WallTime{static_cast<double>(std::mktime(&moment))};
    };
    const WallTime today = onDay(0);
    return today > now ? today : onDay(1);
}

std::optional<std::string> LimitWatch::reached(const Facts& facts) {
    lidWasShut_ = lidWasShut_ || facts.lidIsShut == true;
    if (limits_.seconds && facts.now - begin_ >= *limits_.seconds)
        return "the time is over";
    if (limits_.until && facts.date >= *limits_.until)
        return "it is " + timeOfDayText(*limits_.until, facts.date);
    if (limits_.process && facts.processHasEnded)
        return "process " + std::to_string(*limits_.process) + " has ended";
    if (limits_.onlyOnMains && facts.onMains == false)
        return "the Mac runs on its battery";
    if (limits_.untilLidOpens && lidWasShut_ && facts.lidIsShut == false)
        return "the lid is open";
    return std::nullopt;
}

std::string LimitWatch::waitsFor(const Facts& facts) const {
    std::vector<std::string> ends;
    if (limits_.seconds)
        ends.push_back("for " + clockText(std::max(0.0, *limits_.seconds - (facts.now - begin_))));
    if (limits_.until)
        ends.push_back("until " + timeOfDayText(*limits_.until, facts.date));
    if (limits_.process)
        ends.push_back("until " + std::to_string(*limits_.process) + " ends");
    if (limits_.onlyOnMains)
        ends.emplace_back("on mains only");
    if (limits_.untilLidOpens)
        ends.emplace_back(lidWasShut_ ? "until the lid opens" : "until the lid shuts and opens");
    std::string text;
    for (const std::string& each : ends)
        text += (text.empty() ? "" : ", ") + each;
    return text;
}

std::string clockText(double seconds) {
    const auto whole = static_cast<std::int64_t>(seconds);
    return std::to_string(whole / 3600) + ":" + twoDigits(whole / 60 % 60) + ":"
           + twoDigits(whole % 60);
}

bool isSameDay(WallTime a, WallTime b) {
    const std::tm first = localTime(a);
    const std::tm second = localTime(b);
    return first.tm_year == second.tm_year && first.tm_yday == second.tm_yday;
}

std::string timeOfDayText(WallTime time, WallTime now) {
    if (!(time.sinceEpoch >= 0 && time.sinceEpoch < endOfYear9999))
        return "an unknown time";
    const std::tm moment = localTime(time);
    std::array<char, 32> text{};
    const std::size_t size = std::strftime(
        text.data(), text.size(), isSameDay(time, now) ? "%H:%M" : "%Y-%m-%d %H:%M", &moment);
    return {text.data(), size};
}

} // namespace velmo
