#include "core/terminal/SpelledDetachKey.h"

#include "core/support/Decimal.h"
#include "core/terminal/ControlSequence.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace velmo::PtyAttach {

namespace {

constexpr std::uint8_t sequenceStart = 0x1B;
constexpr std::size_t maxSpelling = 64; ///< bytes; a longer sequence is no key

/// What a typed key means to the detach key.
enum class Meaning { escape, d, nothing, other };

enum Modifier { shift = 1, control = 4, locks = 64 + 128 }; // as a sequence adds them up

std::int32_t numberOr(std::string_view digits, std::int32_t absent) {
    return digits.empty() ? absent : Decimal::parseUnsigned<std::int32_t>(digits).value_or(-1);
}

Meaning meaningOf(std::int32_t code, std::int32_t modifiers) {
    const std::int32_t pressed = (modifiers - 1) & ~std::int32_t{locks};
    if (code == ']')
        return pressed == control ? Meaning::escape : Meaning::other;
    const bool isD = code == 'd' || code == 'D';
    return isD && (pressed & ~std::int32_t{shift}) == 0 ? Meaning::d : Meaning::other;
}

/// Reads CSI code:... ; modifiers:event ; text u. Sequences of other keys have the same second
/// parameter.
Meaning meaningOfKitty(const ControlSequence::Csi& csi) {
    constexpr std::int32_t firstModifier = 57441; // left shift
    constexpr std::int32_t lastModifier = 57454;
    constexpr std::int32_t released = 3;
    std::string_view rest = csi.parameters;
    std::string_view codes = ControlSequence::takeField(rest, ';');
    std::string_view state = ControlSequence::takeField(rest, ';');
    const std::int32_t code = numberOr(ControlSequence::takeField(codes, ':'), 1);
    const std::int32_t modifiers = numberOr(ControlSequence::takeField(state, ':'), 1);
    if (numberOr(state, 1) == released)
        return Meaning::nothing;
    if (csi.final != 'u')
        return Meaning::other;
    if (code >= firstModifier && code <= lastModifier)
        return Meaning::nothing;
    return meaningOf(code, modifiers);
}

Meaning meaningOf(ByteView key) {
    if (key.size() == 1 && key.front() == DetachKey::escape)
        return Meaning::escape;
    if (key.size() < 3)
        return Meaning::other;
    const auto csi = ControlSequence::Csi::parse(textOf(key.subspan(2)));
    if (!csi || !csi->marker.empty() || !csi->intermediates.empty())
        return Meaning::other;
    const auto numbers = csi->numbers();
    if (csi->final == '~' && numbers.size() == 3 && numbers[0] == 27)
        return meaningOf(numbers[2], numbers[1]);
    return meaningOfKitty(*csi);
}

bool isOfParameters(std::uint8_t byte) {
    return (byte >= '0' && byte <= '9') || byte == ';' || byte == ':';
}

/// Returns the length of the key at the front of the bytes: a sequence CSI parameters final, or a
/// byte. Returns 0 if the bytes are the beginning of a sequence, more than its ESC.
std::size_t lengthOfKey(ByteView bytes) {
    if (bytes.size() < 2 || bytes[0] != sequenceStart || bytes[1] != '[')
        return 1;
    const ByteView inside = bytes.subspan(2, std::min(bytes.size(), maxSpelling) - 2);
    const auto end = std::ranges::find_if_not(inside, isOfParameters);
    if (end == inside.end())
        return bytes.size() < maxSpelling ? 0 : 1;
    return *end >= '@' && *end <= '~' ? static_cast<std::size_t>(end - bytes.begin()) + 1 : 1;
}

} // namespace

DetachKey::Result SpelledDetachKey::feed(ByteView typed, std::int64_t nowMs) {
    DetachKey::Result result{.forward = tick(nowMs)};
    Bytes keys = std::exchange(cut_, {});
    if (keys.empty())
        cutSince_ = nowMs;
    keys.insert(keys.end(), typed.begin(), typed.end());
    ByteView rest = keys;
    while (!rest.empty()) {
        const std::size_t length = lengthOfKey(rest);
        if (length == 0) {
            cut_.assign(rest.begin(), rest.end());
            return result;
        }
        cutSince_ = nowMs;
        if (!take(rest.first(length), nowMs, result.forward)) {
            result.detach = true;
            return result;
        }
        rest = rest.subspan(length);
    }
    return result;
}

/// Takes one key. Returns false if it detaches.
bool SpelledDetachKey::take(ByteView key, std::int64_t nowMs, Bytes& forward) {
    const bool isWaiting = key_.deadlineMs().has_value();
    const Meaning meaning = meaningOf(key);
    if (meaning == Meaning::escape) {
        const bool goesOn = press(DetachKey::escape, nowMs, forward);
        if (key_.deadlineMs())
            waiting_.assign(key.begin(), key.end());
        return goesOn;
    }
    if (isWaiting && meaning == Meaning::d)
        return press('d', nowMs, forward);
    if (isWaiting && meaning == Meaning::nothing) {
        waiting_.insert(waiting_.end(), key.begin(), key.end());
        return true;
    }
    for (const std::uint8_t byte : key) {
        if (!press(byte, nowMs, forward))
            return false;
    }
    return true;
}

/// Has the detach key take a byte, and forwards what it releases as that was typed. Returns false
/// if the byte detaches.
bool SpelledDetachKey::press(std::uint8_t byte, std::int64_t nowMs, Bytes& forward) {
    const DetachKey::Result result = key_.feed(ByteView(&byte, 1), nowMs);
    for (const std::uint8_t released : result.forward) {
        if (released == DetachKey::escape)
            forward.insert(forward.end(), waiting_.begin(), waiting_.end());
        else
            forward.push_back(released);
    }
    if (!result.forward.empty() || result.detach)
        waiting_.clear();
    return !result.detach;
}

Bytes SpelledDetachKey::tick(std::int64_t nowMs) {
    Bytes released;
    if (!key_.tick(nowMs).empty())
        released = std::exchange(waiting_, {});
    if (!cut_.empty() && nowMs - cutSince_ >= cutTimeoutMs) {
        for (const std::uint8_t byte : std::exchange(cut_, {}))
            press(byte, nowMs, released);
    }
    return released;
}

std::optional<std::int64_t> SpelledDetachKey::deadlineMs() const {
    const auto key = key_.deadlineMs();
    if (cut_.empty())
        return key;
    const std::int64_t cut = cutSince_ + cutTimeoutMs;
    return std::min(key.value_or(cut), cut);
}

} // namespace velmo::PtyAttach
