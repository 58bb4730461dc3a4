#include "core/terminal/AttachWire.h"

#include "core/support/Ascii.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace velmo::PtyAttach {

namespace {

constexpr PtyFrame::Size usualSize{.cols = 80, .rows = 24};
constexpr std::size_t maxErrorCode = 32; // bytes
constexpr std::int64_t maxExitCode = 255;
constexpr std::string_view badMessage = "bad-message";

struct Hello {
    int cols;
    int rows;
    std::string token;

    static constexpr auto fields =
        std::tuple{constant("t", "hello"), constant("v", 1), field("token", &Hello::token),
                   field("cols", &Hello::cols), field("rows", &Hello::rows)};
};

struct Resize {
    int cols;
    int rows;

    static constexpr auto fields = std::tuple{constant("t", "resize"), field("cols", &Resize::cols),
                                              field("rows", &Resize::rows)};
};

std::size_t limitOf(FrameType type) {
    return type == FrameType::data ? maxData : maxControl;
}

std::optional<FrameType> frameTypeOf(std::uint8_t raw) {
    switch (const auto type = static_cast<FrameType>(raw)) {
    case FrameType::data:
    case FrameType::control:
        return type;
    }
    return std::nullopt;
}

/// Tells whether the code may be shown on the terminal.
bool isErrorCode(std::string_view text) {
    return !text.empty() && text.size() <= maxErrorCode
           && Ascii::isMadeOfLettersDigitsAnd("-_.", text);
}

host::Ready ready(const JsonObject& object) {
    host::Ready ready{.name = std::string(object.text("name").value_or(""))};
    if (const auto given = object.object("labels"))
        ready.labels = decodeRecordLeniently<Labels>(*given);
    std::apply(
        [&](const auto&... label) {
            ((ready.labels.*label.member = sanitizeLabel(ready.labels.*label.member)), ...);
        },
        Labels::fields);
    return ready;
}

HostMessage exit(const JsonObject& object) {
    const auto code = object.integer("code");
    if (!code)
        return host::Error{std::string(badMessage)};
    return host::Exit{static_cast<int>(std::clamp<std::int64_t>(*code, 0, maxExitCode))};
}

host::Error error(const JsonObject& object) {
    const std::string_view code = object.text("code").value_or("");
    return {std::string(isErrorCode(code) ? code : badMessage)};
}

} // namespace

std::optional<ControlObject> ControlObject::parse(std::string_view json) {
    auto document = JsonDocument::parse(json);
    if (!document || !document->object())
        return std::nullopt;
    return ControlObject(*std::move(document));
}

std::optional<DecodeError> DecoderRules::faultOf(const FrameHeader& header) {
    const auto type = frameTypeOf(header.type);
    if (!type)
        return DecodeError::unknownType;
    if (header.length > limitOf(*type))
        return DecodeError::tooLarge;
    return std::nullopt;
}

std::optional<DecodeError> DecoderRules::faultOf(const FrameView& frame) {
    const bool isSound =
        frame.type == FrameType::data || ControlObject::parse(textOf(frame.payload)).has_value();
    return isSound ? std::nullopt : std::optional(DecodeError::badJSON);
}

FrameView DecoderRules::view(std::uint8_t type, ByteView payload) {
    return {.type = static_cast<FrameType>(type), .payload = payload};
}

std::expected<Frame, DecodeError> DecoderRules::frame(const FrameView& view, Bytes payload) {
    if (view.type == FrameType::data)
        return payload;
    auto object = ControlObject::parse(textOf(view.payload));
    if (!object)
        return std::unexpected(DecodeError::badJSON);
    return *std::move(object);
}

std::optional<Bytes> frame(FrameType type, ByteView payload) {
    if (payload.size() > limitOf(type))
        return std::nullopt;
    Bytes frame;
    frame.reserve(headerBytes + payload.size());
    appendFrame(frame, std::to_underlying(type), payload);
    return frame;
}

Bytes data(ByteView bytes) {
    static_assert(std::to_underlying(FrameType::data) == std::to_underlying(PtyFrame::Kind::data));
    return PtyFrame::data(bytes);
}

std::optional<Bytes> hello(std::string_view token, int cols, int rows) {
    return control(Hello{.cols = cols, .rows = rows, .token = std::string(token)});
}

Bytes resize(int cols, int rows) {
    return control(Resize{.cols = cols, .rows = rows}).value(); // two numbers always fit
}

HostMessage message(const JsonObject& object) {
    const std::string_view type = object.text("t").value_or("");
    if (type == "ready")
        return ready(object);
    if (type == "exit")
        return exit(object);
    if (type == "error")
        return error(object);
    if (type == "size")
        return host::Size{};
    return host::Other{};
}

PtyFrame::Size clampSize(int cols, int rows) {
    if (cols < 1 || rows < 1)
        return usualSize;
    return {.cols = std::min(cols, PtyFrame::maxCols), .rows = std::min(rows, PtyFrame::maxRows)};
}

} // namespace velmo::PtyAttach
