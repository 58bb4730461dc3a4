#pragma once

#include "core/apps/NameComparison.h"
#include "core/support/BigEndian.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A device as the system's audio layer describes it.
struct RawAudioDevice {
    std::uint32_t deviceID = 0;
    std::optional<std::string> uid; ///< stays the same when the device comes back
    std::optional<std::string> name;
    std::uint32_t transportType = 0; ///< a code of four characters, `AudioOutputs::fourCC`
    std::int64_t outputChannels = 0;
    bool hidden = false;

    bool operator==(const RawAudioDevice&) const = default;
};

/// A device as it is listed to choose from.
struct AudioOutput {
    std::string id; ///< the uid, trimmed
    std::string name;
    std::string transport; ///< `AudioOutputs::transport`
    bool isDefault = false;

    static constexpr auto fields = std::tuple{
        field("id", &AudioOutput::id), field("name", &AudioOutput::name),
        field("transport", &AudioOutput::transport), field("isDefault", &AudioOutput::isDefault)};
    bool operator==(const AudioOutput&) const = default;
};

namespace AudioOutputs {

/// The first four bytes of the text as one number, the first byte highest; of a shorter text the
/// bytes that it has.
constexpr std::uint32_t fourCC(std::string_view text) {
    return static_cast<std::uint32_t>(BigEndian::read(text.substr(0, 4)));
}

/// The way to the device in one word, such as "usb"; "other" for an unknown code.
std::string_view transport(std::uint32_t code);

/// 1 to 200 bytes of printable ASCII that begin with neither a space nor "-": what comes back from
/// outside must not be taken for an option.
bool isValidID(std::string_view id);

/// The one argument, if it is a valid identifier; untrimmed.
std::optional<std::string> parseSetArgs(std::span<const std::string> args);

/// What can be chosen: visible devices with output channels, a valid identifier that no device
/// before had, and a name. The default one comes first, the others in the order of `byValue`, which
/// is a comparison with `DigitOrder::byValue`.
std::vector<AudioOutput> list(std::span<const RawAudioDevice> devices,
                              std::optional<std::uint32_t> defaultID,
                              const NameComparison& byValue);

/// The first visible device with output channels whose trimmed uid is this one.
std::optional<RawAudioDevice> target(std::string_view uid, std::span<const RawAudioDevice> devices);

} // namespace AudioOutputs

} // namespace velmo
