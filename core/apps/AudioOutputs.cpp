#include "core/apps/AudioOutputs.h"

#include "core/support/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::AudioOutputs {

namespace {

struct Transport {
    std::uint32_t code;
    std::string_view name;
};

constexpr Transport transports[] = {
    {.code = fourCC("bltn"), .name = "built-in"},
    {.code = fourCC("blue"), .name = "bluetooth"},
    {.code = fourCC("blea"), .name = "bluetooth"},
    {.code = fourCC("airp"), .name = "airplay"},
    {.code = fourCC("usb "), .name = "usb"},
    {.code = fourCC("hdmi"), .name = "hdmi"},
    {.code = fourCC("dprt"), .name = "displayport"},
    {.code = fourCC("thun"), .name = "thunderbolt"},
    {.code = fourCC("virt"), .name = "virtual"},
    {.code = fourCC("grup"), .name = "virtual"},
    {.code = fourCC("aggr"), .name = "virtual"},
};

std::string_view trimmed(const std::optional<std::string>& text) {
    return text ? Text::trimmed(*text, Text::isBlankOrNewline) : std::string_view();
}

bool isVisibleOutput(const RawAudioDevice& device) {
    return device.outputChannels >= 1 && !device.hidden;
}

} // namespace

std::string_view transport(std::uint32_t code) {
    const auto* const found = std::ranges::find(transports, code, &Transport::code);
    return found == std::end(transports) ? "other" : found->name;
}

bool isValidID(std::string_view id) {
    return !id.empty() && id.size() <= maxIDLength && id.front() != ' ' && id.front() != '-'
           && std::ranges::all_of(id, [](char c) { return c >= ' ' && c <= '~'; });
}

std::optional<std::string> parseSetArgs(std::span<const std::string> args) {
    if (args.size() != 1 || !isValidID(args.front()))
        return std::nullopt;
    return args.front();
}

std::vector<AudioOutput> list(std::span<const RawAudioDevice> devices,
                              std::optional<std::uint32_t> defaultID,
                              const NameComparison& byValue) {
    const auto before = [&](const AudioOutput& a, const AudioOutput& b) {
        return a.isDefault != b.isDefault ? a.isDefault : byValue(a.name, b.name) < 0;
    };
    std::vector<AudioOutput> outputs;
    for (const RawAudioDevice& device : devices) {
        const std::string_view id = trimmed(device.uid);
        const std::string_view name = trimmed(device.name);
        if (!isVisibleOutput(device) || !isValidID(id) || name.empty()
            || std::ranges::find(outputs, id, &AudioOutput::id) != outputs.end())
            continue;
        AudioOutput output{.id = std::string(id),
                           .name = std::string(name),
                           .transport = std::string(transport(device.transportType)),
                           .isDefault = defaultID == device.deviceID};
        // Inserted after its equals, so that they stay in the order of the devices.
        outputs.insert(std::ranges::upper_bound(outputs, output, before), std::move(output));
    }
    return outputs;
}

std::optional<RawAudioDevice> target(std::string_view uid,
                                     std::span<const RawAudioDevice> devices) {
    const auto found = std::ranges::find_if(devices, [&](const RawAudioDevice& device) {
        return device.uid && trimmed(device.uid) == uid && isVisibleOutput(device);
    });
    return found == devices.end() ? std::nullopt : std::optional(*found);
}

} // namespace velmo::AudioOutputs
