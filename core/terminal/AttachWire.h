#pragma once

#include "core/support/Bytes.h"
#include "core/support/Json.h"
#include "core/support/Record.h"
#include "core/terminal/AttachLabels.h"
#include "core/terminal/FrameDecoder.h"
#include "core/terminal/PtyFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// The connection of the attach client to the host. Frames as in PtyFrame.h, of two types:
///
///     type byte | length, 4 bytes | payload
///     data    1 | 0...65536       | raw terminal bytes, either way
///     control 6 | 2...4096        | one JSON object, whose member "t" names the message
///
/// 06 00 00 00 0C {"t":"size"} is the host's message "size".
namespace velmo::PtyAttach {

inline constexpr std::size_t headerBytes = FrameHeader::bytes;
inline constexpr std::size_t maxControl = 4096;
inline constexpr std::size_t maxData = 65536;

enum class FrameType : std::uint8_t { data = 1, control = 6 };

/// A document whose root is an object.
class ControlObject {
public:
    static std::optional<ControlObject> parse(std::string_view json);

    [[nodiscard]] JsonObject object() const { return *document_.root().object(); }

private:
    explicit ControlObject(JsonDocument document) : document_(std::move(document)) {}

    JsonDocument document_;
};

using Frame = std::variant<Bytes, ControlObject>;

enum class DecodeError { unknownType, tooLarge, badJSON };

struct DecoderRules {
    using Frame = PtyAttach::Frame;
    using Error = DecodeError;

    static std::optional<Error> faultOf(const FrameHeader& header);
    static std::expected<Frame, Error> frame(const FrameHeader& header, Bytes payload);
};

using Decoder = FrameDecoder<DecoderRules>;

/// Absent when the payload is longer than its type allows.
std::optional<Bytes> frame(FrameType type, ByteView payload);

/// As many data frames as it takes; one empty frame for no bytes.
Bytes data(ByteView bytes);

/// A record as a control frame; absent when its JSON is longer than `maxControl`.
template<Record R>
std::optional<Bytes> control(const R& object) {
    const auto json = encodeJson(object);
    return json ? frame(FrameType::control, bytesOf(*json)) : std::nullopt;
}

/// The greeting, with the ticket's token. Apply `clampSize` to the size first, here and in
/// `resize`. Absent when the token is far too long.
std::optional<Bytes> hello(std::string_view token, int cols, int rows);
Bytes resize(int cols, int rows);

/// A control frame that is known when the program is built.
template<std::size_t size>
consteval auto constantControl(const char (&json)[size]) {
    constexpr std::size_t length = size - 1;
    static_assert(length <= 0xFF);
    std::array<std::uint8_t, headerBytes + length> frame{std::to_underlying(FrameType::control), 0,
                                                         0, 0, length};
    std::transform(json, json + length, frame.begin() + headerBytes,
                   [](char c) { return static_cast<std::uint8_t>(c); });
    return frame;
}

inline constexpr auto detachFrame = constantControl(R"({"t":"detach"})");
inline constexpr auto hangupFrame = constantControl(R"({"t":"hangup"})");

/// What the host says.
namespace host {

struct Ready {
    std::string name; ///< of the session, as it came: pass it through `titleSequence`
    Labels labels;    ///< sanitised

    bool operator==(const Ready&) const = default;
};

struct Exit {
    int code = 0; ///< 0...255

    bool operator==(const Exit&) const = default;
};

struct Error {
    std::string code; ///< 1...32 ASCII letters, digits, "-", "_" and "."

    bool operator==(const Error&) const = default;
};

struct Size {
    bool operator==(const Size&) const = default;
};

struct Other {
    bool operator==(const Other&) const = default;
};

} // namespace host

using HostMessage = std::variant<host::Ready, host::Exit, host::Error, host::Size, host::Other>;

/// An "exit" without an integer code, and an "error" without a code that may be shown, are the
/// error "bad-message": the client must end with a true text rather than wait.
HostMessage message(const JsonObject& object);

/// At most 1000 x 500; 80 x 24 when either is below 1, whatever the other is.
PtyFrame::Size clampSize(int cols, int rows);

} // namespace velmo::PtyAttach
