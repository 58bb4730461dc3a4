#pragma once

#include "core/apps/NameComparison.h"
#include "core/support/BigEndian.h"
#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A sound device as the system's audio layer describes it.
struct RawAudioDevice {
    std::uint32_t deviceID = 0;
    std::optional<std::string> uid; ///< the same whenever the device is connected again
    std::optional<std::string> name;
    std::uint32_t transportType = 0; ///< a code as `AudioOutputs::fourCC` makes it
    std::int64_t outputChannels = 0; ///< 0 for a device that only records
    bool hidden = false;             ///< the system does not offer it to people

    bool operator==(const RawAudioDevice&) const = default;
};

/// An output device that people may choose.
struct AudioOutput {
    std::string id;        ///< the device's uid without white space around it
    std::string name;      ///< without white space around it
    std::string transport; ///< as `AudioOutputs::transport` names it
    bool isDefault = false;

    static constexpr auto fields = std::tuple{
        field("id", &AudioOutput::id), field("name", &AudioOutput::name),
        field("transport", &AudioOutput::transport), field("isDefault", &AudioOutput::isDefault)};
    bool operator==(const AudioOutput&) const = default;
};

namespace AudioOutputs {

inline constexpr std::size_t maxIDLength = 200; ///< bytes

/// Returns the first four bytes of the text as one number, the first byte highest. A shorter text
/// gives the number that its bytes make: "ab" is 0x6162, and "" is 0.
constexpr std::uint32_t fourCC(std::string_view text) {
    return static_cast<std::uint32_t>(BigEndian::read(text.substr(0, 4)));
}

/// Returns how the device is connected in one word, such as "usb"; "other" for an unknown code.
std::string_view transport(std::uint32_t code);

/// Tells whether the text is 1 to `maxIDLength` bytes of printable ASCII and begins with neither a
/// space nor "-". The phone sends the identifier back, and the host makes it an argument of a
/// command, which must never read it as an option.
bool isValidID(std::string_view id);

/// Reads the arguments of the command that switches the output: a valid identifier alone, which is
/// returned as it is.
std::optional<std::string> parseSetArgs(std::span<const std::string> args);

/// Returns the devices that people may choose: those that are visible and have output channels, a
/// valid identifier and a name. Of several with one identifier the first is listed. The default
/// output comes first, the others follow by name; equal names stay in the order of the devices.
/// `byValue` compares names with `DigitOrder::byValue`.
std::vector<AudioOutput> list(std::span<const RawAudioDevice> devices,
                              std::optional<std::uint32_t> defaultID,
                              const NameComparison& byValue);

/// Returns the first visible device with output channels that has exactly this uid, apart from
/// white space around the device's own.
std::optional<RawAudioDevice> target(std::string_view uid, std::span<const RawAudioDevice> devices);

} // namespace AudioOutputs

} // namespace velmo
