#include "core/terminal/DetachKey.h"

namespace velmo::PtyAttach {

DetachKey::Result DetachKey::feed(ByteView typed, std::int64_t nowMs) {
    Result result{.forward = tick(nowMs)};
    for (const std::uint8_t byte : typed) {
        if (!since_) {
            if (byte == escape)
                since_ = nowMs;
            else
                result.forward.push_back(byte);
            continue;
        }
        since_.reset();
        if (byte == 'd' || byte == 'D') {
            result.detach = true;
            return result;
        }
        result.forward.push_back(escape);
        if (byte != escape)
            result.forward.push_back(byte);
    }
    return result;
}

Bytes DetachKey::tick(std::int64_t nowMs) {
    if (!since_ || nowMs - *since_ < timeoutMs)
        return {};
    since_.reset();
    return {escape};
}

std::optional<std::int64_t> DetachKey::deadlineMs() const {
    return since_.transform([](std::int64_t since) { return since + timeoutMs; });
}

} // namespace velmo::PtyAttach
