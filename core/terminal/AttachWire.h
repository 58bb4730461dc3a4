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

/// The connection of the attach client to the host. The frames look like those of PtyFrame.h and
/// have two types:
///
///     type byte | length, 4 bytes | payload
///     data    1 | 0...65536       | raw terminal bytes, either way
///     control 6 | 2...4096        | one JSON object; the member "t" names the message
///
/// 06 00 00 00 0C {"t":"size"} is the host's message "size".
namespace velmo::PtyAttach {

inline constexpr std::size_t headerBytes = FrameHeader::bytes;
inline constexpr std::size_t maxControl = 4096;              ///< bytes
inline constexpr std::size_t maxData = PtyFrame::maxPayload; ///< bytes

enum class FrameType : std::uint8_t { data = 1, control = 6 };

/// The payload of a control frame: a JSON document with an object as its root.
class ControlObject {
public:
    /// Returns the document, or nothing if the text is not JSON or its root is not an object.
    static std::optional<ControlObject> parse(std::string_view json);

    /// Returns the root, a view into this document.
    [[nodiscard]] JsonObject object() const { return *document_.object(); }

private:
    explicit ControlObject(JsonDocument document) : document_(std::move(document)) {}

    JsonDocument document_;
};

using Frame = std::variant<Bytes, ControlObject>;

/// A frame that refers to its payload, which lies elsewhere. The payload of a control frame is JSON
/// that `ControlObject::parse` accepts.
struct FrameView {
    FrameType type = FrameType::data;
    ByteView payload;
};

/// What is wrong with a frame. `unknownType` and `tooLarge` are found as soon as the header is
/// there, in this order; `badJSON` once the payload is whole.
enum class DecodeError { unknownType, tooLarge, badJSON };

struct DecoderRules {
    using Frame = PtyAttach::Frame;
    using FrameView = PtyAttach::FrameView;
    using Error = DecodeError;

    static bool isSoundData(const FrameHeader& header) {
        return header.type == std::to_underlying(FrameType::data) && header.length <= maxData;
    }

    static std::optional<Error> faultOf(const FrameHeader& header);
    static std::optional<Error> faultOf(const FrameView& frame);
    static FrameView view(std::uint8_t type, ByteView payload);
    static std::expected<Frame, Error> frame(const FrameView& view, Bytes payload);
};

using Decoder = FrameDecoder<DecoderRules>;

/// Returns a frame, or nothing if the payload is longer than its type allows.
std::optional<Bytes> frame(FrameType type, ByteView payload);

/// Returns the bytes in as many data frames as needed; for no bytes, one empty frame.
Bytes data(ByteView bytes);

/// Returns a record as a control frame, or nothing if its JSON is longer than `maxControl`.
template<Record R>
std::optional<Bytes> control(const R& object) {
    const auto json = encodeJson(object);
    return json ? frame(FrameType::control, bytesOf(*json)) : std::nullopt;
}

/// Returns the greeting, with the ticket's token, or nothing if the token makes it longer than
/// `maxControl`. The caller applies `clampSize` to the size first, here and in `resize`.
std::optional<Bytes> hello(std::string_view token, int cols, int rows);
Bytes resize(int cols, int rows);

inline constexpr std::size_t shortMessage = 14; ///< bytes of {"t":"detach"} and {"t":"hangup"}

/// Returns the control frame of a message of just that length.
constexpr std::array<std::uint8_t, headerBytes + shortMessage> shortFrame(std::string_view json) {
    std::array<std::uint8_t, headerBytes + shortMessage> frame{
        std::to_underlying(FrameType::control), 0, 0, 0, shortMessage};
    std::ranges::copy(json, frame.begin() + headerBytes);
    return frame;
}

inline constexpr auto detachFrame = shortFrame(R"({"t":"detach"})");
inline constexpr auto hangupFrame = shortFrame(R"({"t":"hangup"})");

/// The messages of the host.
namespace host {

struct Ready {
    std::string name; ///< of the session, not sanitised: show it by `titleSequence`
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

/// Asks for a "resize" message.
struct Size {
    bool operator==(const Size&) const = default;
};

/// A message that this client does not know, to be ignored.
struct Other {
    bool operator==(const Other&) const = default;
};

} // namespace host

using HostMessage = std::variant<host::Ready, host::Exit, host::Error, host::Size, host::Other>;

/// Returns the host's message. An "exit" without an integer code, and an "error" without a code
/// that may be shown, become the error "bad-message": the session is over, and the user is told so.
HostMessage message(const JsonObject& object);

/// Returns a size that the host accepts: at most 1000 x 500, and 80 x 24 if either number is below
/// 1, whatever the other is.
PtyFrame::Size clampSize(int cols, int rows);

} // namespace velmo::PtyAttach
