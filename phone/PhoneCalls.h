#pragma once

#include "core/support/Record.h"
#include "phone/DeviceRights.h"
#include "sessions/SessionCalls.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The text messages on a page's WebSocket, one JSON object each. The page makes calls, and the
/// bridge tells it events. Binary messages carry the frames of the session that the page watches
/// (core/terminal/PtyFrame.h), cut anywhere.
///
///     {"call":"list"}                        sessions
///     {"call":"watch","session":ID}          watching; from then on, frames both ways
///     {"call":"shown","bytes":4711}          no event
///     {"call":"leave"}                       left
///     {"call":"start","name":"...","folder":"...","words":["claude"],"cols":80,"rows":24}  started
///     {"call":"end","session":ID}            ending
///     {"call":"power"}                       power
///     {"call":"awake","on":true}           power
namespace velmo {

enum class PhoneCall { list, watch, shown, leave, start, end, power, awake };

template<>
inline constexpr auto rawTexts<PhoneCall> = std::to_array<std::string_view>(
    {"list", "watch", "shown", "leave", "start", "end", "power", "awake"});

struct PhoneCallLine {
    PhoneCall call = PhoneCall::list;
    std::optional<std::string> session;            ///< of watch and end: an id or a name
    std::optional<std::uint64_t> bytes;            ///< of shown: since the event "watching"
    std::optional<std::string> name;               ///< of start; absent: the program's own
    std::optional<std::string> folder;             ///< of start; absent: home
    std::optional<std::vector<std::string>> words; ///< of start; absent: the log-in shell
    std::optional<std::int64_t> cols;              ///< of start
    std::optional<std::int64_t> rows;              ///< of start
    std::optional<bool> on;                        ///< of awake

    static constexpr auto fields = std::tuple{
        field("call", &PhoneCallLine::call),     field("session", &PhoneCallLine::session),
        field("bytes", &PhoneCallLine::bytes),   field("name", &PhoneCallLine::name),
        field("folder", &PhoneCallLine::folder), field("words", &PhoneCallLine::words),
        field("cols", &PhoneCallLine::cols),     field("rows", &PhoneCallLine::rows),
        field("on", &PhoneCallLine::on)};
    bool operator==(const PhoneCallLine&) const = default;
};

enum class PhoneEvent {
    hello,    ///< the connection is open
    sessions, ///< the reply to list
    watching, ///< the page watches the session; the next binary message begins its stream
    left,     ///< the page watches no session; the reply to leave
    gone,     ///< the host has closed the session's stream; likewise
    started,  ///< a session has been started
    ending,   ///< a session has been told to end
    refused,  ///< a call has had no effect
    power,    ///< the reply to power and awake, and whenever the hold of the bridge has changed
};

template<>
inline constexpr auto rawTexts<PhoneEvent> = std::to_array<std::string_view>(
    {"hello", "sessions", "watching", "left", "gone", "started", "ending", "refused", "power"});

/// Why the bridge itself refuses a call. All other reasons are the host's, `SessionRefusal`.
namespace PhoneRefusal {

inline constexpr std::string_view rights = "rights";           ///< the device may only view
inline constexpr std::string_view unreachable = "unreachable"; ///< no session host answers

} // namespace PhoneRefusal

/// The computer's power, as a page shows it.
struct PhonePowerLine {
    std::optional<int> battery;        ///< percent; absent without a battery
    std::optional<bool> mains;         ///< absent where the system does not tell
    bool hasDaemon = false;            ///< a power daemon answers
    bool keeps = false;                ///< the bridge's switch is on
    bool isAwake = false;              ///< a hold is in force
    std::optional<std::string> holder; ///< the program that has the hold
    std::optional<std::string> why;    ///< why the bridge's hold has ended, or was refused
    std::optional<double> whyAt;       ///< when, in seconds since 1970

    static constexpr auto fields = std::tuple{field("battery", &PhonePowerLine::battery),
                                              field("mains", &PhonePowerLine::mains),
                                              field("hasDaemon", &PhonePowerLine::hasDaemon),
                                              field("keeps", &PhonePowerLine::keeps),
                                              field("isAwake", &PhonePowerLine::isAwake),
                                              field("holder", &PhonePowerLine::holder),
                                              field("why", &PhonePowerLine::why),
                                              field("whyAt", &PhonePowerLine::whyAt)};
    bool operator==(const PhonePowerLine&) const = default;
};

struct PhoneEventLine {
    PhoneEvent event = PhoneEvent::hello;
    std::optional<PhoneCall> call;                     ///< of refused
    std::optional<std::string> reason;                 ///< of refused
    std::optional<std::string> session;                ///< of watching, gone, started, ending
    std::optional<std::vector<SessionEntry>> sessions; ///< of sessions
    std::optional<std::string> device;                 ///< of hello: the device's name
    std::optional<DeviceRights> rights;                ///< of hello
    std::optional<PhonePowerLine> power;               ///< of power

    static constexpr auto fields = std::tuple{
        field("event", &PhoneEventLine::event),       field("call", &PhoneEventLine::call),
        field("reason", &PhoneEventLine::reason),     field("session", &PhoneEventLine::session),
        field("sessions", &PhoneEventLine::sessions), field("device", &PhoneEventLine::device),
        field("rights", &PhoneEventLine::rights),     field("power", &PhoneEventLine::power)};
    bool operator==(const PhoneEventLine&) const = default;
};

/// The longest message of the page in bytes: a data frame of the greatest length and its header.
inline constexpr std::size_t maxPhoneMessage = 65536 + 5;

/// Reads a call. Absent for what is not one, and for a call that lacks a member that it needs.
std::optional<PhoneCallLine> readPhoneCall(std::string_view text);

} // namespace velmo
