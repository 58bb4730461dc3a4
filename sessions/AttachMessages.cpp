#include "sessions/AttachMessages.h"

#include "core/support/Ascii.h"
#include "core/support/Record.h"
#include "core/terminal/AttachTicket.h"
#include "core/terminal/AttachWire.h"

#include <algorithm>
#include <tuple>

namespace velmo::PtyAttach {

namespace {

struct OwnLabels {
    std::string detached;

    static constexpr auto fields = std::tuple{field("detached", &OwnLabels::detached)};
};

struct Ready {
    std::string name;
    OwnLabels labels;

    static constexpr auto fields = std::tuple{constant("t", "ready"), field("name", &Ready::name),
                                              field("labels", &Ready::labels)};
};

struct Exit {
    int code;

    static constexpr auto fields = std::tuple{constant("t", "exit"), field("code", &Exit::code)};
};

struct Error {
    std::string code;

    static constexpr auto fields = std::tuple{constant("t", "error"), field("code", &Error::code)};
};

std::optional<PtyFrame::Size> sizeOf(const JsonObject& object) {
    const auto cols = object.integer("cols");
    const auto rows = object.integer("rows");
    if (!cols || !rows)
        return std::nullopt;
    const auto bounded = [](std::int64_t number) {
        return static_cast<int>(std::clamp<std::int64_t>(number, 0, PtyFrame::maxCols));
    };
    return clampSize(bounded(*cols), bounded(*rows));
}

} // namespace

std::optional<ClientMessage> clientMessage(const JsonObject& object) {
    const std::string_view type = object.text("t").value_or("");
    if (type == "detach" || type == "hangup")
        return client::Leave{};
    if (type != "hello" && type != "resize")
        return client::Other{};
    const auto size = sizeOf(object);
    if (!size)
        return std::nullopt;
    if (type == "resize")
        return client::Resize{*size};
    const auto token = object.text("token");
    if (object.integer("v") != 1 || !token || !isToken(*token))
        return std::nullopt;
    return client::Hello{.token = std::string(*token), .size = *size};
}

// Names and codes are short enough that their frames always fit.
Bytes readyFrame(std::string_view name, std::string_view id) {
    const bool isPlain =
        !name.empty() && name.front() != '-' && Ascii::isMadeOfLettersDigitsAnd("-_.", name);
    const std::string command = "velmo-session attach " + std::string(isPlain ? name : id);
    return control(Ready{.name = std::string(name),
                         .labels = {"Detached. The session keeps running: continue it with \""
                                    + command + "\", or on your phone."}})
        .value();
}

Bytes exitFrame(int code) {
    return control(Exit{code}).value();
}

Bytes errorFrame(std::string_view code) {
    return control(Error{std::string(code)}).value();
}

} // namespace velmo::PtyAttach
