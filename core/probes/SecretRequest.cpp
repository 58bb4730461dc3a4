#include "core/probes/SecretRequest.h"

#include "core/support/Ascii.h"
#include "core/support/Bytes.h"
#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t maxAccount = 32;   ///< bytes
constexpr std::size_t maxLineEnding = 2; ///< bytes

bool isSmallLetter(char c) {
    return c >= 'a' && c <= 'z';
}

/// Overwrites the bytes with zeros at the end of its life. The writes go through volatile, because
/// a compiler may leave out a plain write to memory that is never read again.
class WipeAtEnd {
public:
    explicit WipeAtEnd(std::span<std::uint8_t> bytes) : bytes_(bytes) {}

    WipeAtEnd(const WipeAtEnd&) = delete;
    WipeAtEnd& operator=(const WipeAtEnd&) = delete;

    ~WipeAtEnd() {
        for (volatile std::uint8_t& byte : bytes_)
            byte = 0;
    }

private:
    std::span<std::uint8_t> bytes_;
};

/// Removes one LF or CR LF. A CR alone does not count as a line ending.
std::string_view withoutLineEnding(std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(text.ends_with("\r\n") ? 2 : 1);
    return text;
}

} // namespace

bool SecretRequest::validAccount(std::string_view name) {
    return !name.empty() && name.size() <= maxAccount && isSmallLetter(name.front())
           && std::ranges::all_of(
               name, [](char c) { return isSmallLetter(c) || Ascii::isDigit(c) || c == '-'; });
}

std::optional<SecretRequest> SecretRequest::parse(std::span<const std::string> arguments) {
    if (arguments.size() != 2 || !validAccount(arguments[1]))
        return std::nullopt;
    return fromRawText<Verb>(arguments[0]).transform([&](Verb wanted) {
        return SecretRequest{.verb = wanted, .account = arguments[1]};
    });
}

std::optional<std::string> SecretRequest::value(std::span<std::uint8_t> raw) {
    const WipeAtEnd wipe(raw);
    if (raw.size() > maxBytes + maxLineEnding)
        return std::nullopt;
    const std::string_view secret = withoutLineEnding(textOf(raw));
    if (secret.empty() || secret.size() > maxBytes || !Text::isValidUtf8(secret)
        || std::ranges::any_of(secret, Ascii::isControl))
        return std::nullopt;
    // Constructed in the returned object: moving a short text would leave a copy of its bytes.
    return std::optional<std::string>(std::in_place, secret);
}

} // namespace velmo
