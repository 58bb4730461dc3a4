#include "core/support/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace velmo::Base64 {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

constexpr std::size_t groupCharacters = 4;
constexpr std::size_t groupBytes = 3;

/// Set in the sum of a group if one of its characters is not in the alphabet.
constexpr std::uint32_t foreign = 1U << 24U;

using Table = std::array<std::uint32_t, 256>;

/// Where the six bits of a character stand among the 24 of its group, by its place in the group.
constexpr std::array<Table, groupCharacters> bitsByPlace = [] {
    std::array<Table, groupCharacters> tables{};
    for (std::uint32_t place = 0; place < groupCharacters; ++place) {
        tables[place].fill(foreign);
        for (std::uint32_t value = 0; value < alphabet.size(); ++value)
            tables[place][static_cast<unsigned char>(alphabet[value])] = value << (18 - 6 * place);
    }
    return tables;
}();

std::uint32_t groupValue(const unsigned char* characters) {
    return bitsByPlace[0][characters[0]] | bitsByPlace[1][characters[1]]
           | bitsByPlace[2][characters[2]] | bitsByPlace[3][characters[3]];
}

void putGroup(std::uint8_t* bytes, std::uint32_t value) {
    bytes[0] = static_cast<std::uint8_t>(value >> 16U);
    bytes[1] = static_cast<std::uint8_t>(value >> 8U);
    bytes[2] = static_cast<std::uint8_t>(value);
}

} // namespace

std::string encode(ByteView bytes) {
    std::string text((bytes.size() + groupBytes - 1) / groupBytes * groupCharacters, padding);
    auto* out = text.data();
    const auto put = [&](std::uint32_t value, std::uint32_t characters) {
        for (std::uint32_t place = 0; place < characters; ++place)
            *out++ = alphabet[value >> (18 - 6 * place) & 0x3FU];
    };
    const auto at = [&](std::size_t i) -> std::uint32_t { return bytes[i]; };
    for (; bytes.size() >= groupBytes; bytes = bytes.subspan(groupBytes))
        put(at(0) << 16U | at(1) << 8U | at(2), groupCharacters);
    if (bytes.size() == 2)
        put(at(0) << 16U | at(1) << 8U, 3);
    if (bytes.size() == 1)
        put(at(0) << 16U, 2);
    return text;
}

std::optional<Bytes> decode(std::string_view text) {
    Decoder decoder(text.size());
    return decoder.append(text) ? decoder.finish() : std::nullopt;
}

Decoder::Decoder(std::size_t characters) {
    bytes_.reserve(characters / groupCharacters * groupBytes);
}

bool Decoder::append(std::string_view piece) {
    const std::size_t missing = groupCharacters - pending_.size();
    if (piece.size() <= missing) {
        pending_ += piece;
        return true;
    }
    if (!pending_.empty()) {
        pending_ += piece.substr(0, missing);
        piece.remove_prefix(missing);
        if (!appendWhole(pending_))
            return false;
    }
    // At least one character is held back.
    const std::size_t whole = (piece.size() - 1) / groupCharacters * groupCharacters;
    pending_ = piece.substr(whole);
    return appendWhole(piece.substr(0, whole));
}

std::optional<Bytes> Decoder::finish() {
    if (pending_.empty())
        return std::move(bytes_);
    if (pending_.size() != groupCharacters)
        return std::nullopt;
    const std::size_t end = pending_.find_last_not_of(padding) + 1;
    const std::size_t padded = groupCharacters - end;
    if (padded > 2)
        return std::nullopt;
    std::ranges::fill(pending_.begin() + static_cast<std::ptrdiff_t>(end), pending_.end(),
                      alphabet.front());
    if (!appendWhole(pending_))
        return std::nullopt;
    for (std::size_t i = 0; i < padded; ++i) {
        if (bytes_.back() != 0)
            return std::nullopt;
        bytes_.pop_back();
    }
    return std::move(bytes_);
}

/// A multiple of four characters, none of them padding.
bool Decoder::appendWhole(std::string_view characters) {
    // By blocks on the stack, so that the bytes grow in few steps and no memory is cleared first.
    constexpr std::size_t blockGroups = 1024;
    std::array<std::uint8_t, blockGroups * groupBytes> block;
    const auto* from = reinterpret_cast<const unsigned char*>(characters.data());
    for (std::size_t left = characters.size() / groupCharacters; left > 0;) {
        const std::size_t groups = std::min(left, blockGroups);
        std::uint32_t seen = 0;
        for (std::size_t i = 0; i < groups; ++i) {
            const std::uint32_t value = groupValue(from + i * groupCharacters);
            seen |= value;
            putGroup(block.data() + i * groupBytes, value);
        }
        if ((seen & foreign) != 0)
            return false;
        bytes_.insert(bytes_.end(), block.begin(),
                      block.begin() + static_cast<std::ptrdiff_t>(groups * groupBytes));
        from += groups * groupCharacters;
        left -= groups;
    }
    return true;
}

} // namespace velmo::Base64
