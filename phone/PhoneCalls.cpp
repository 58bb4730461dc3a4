#include "phone/PhoneCalls.h"

#include "core/terminal/PtyFrame.h"

namespace velmo {

namespace {

bool hasWhatItNeeds(const PhoneCallLine& line) {
    switch (line.call) {
    case PhoneCall::watch:
    case PhoneCall::end:
        return line.session.has_value();
    case PhoneCall::shown:
        return line.bytes.has_value();
    case PhoneCall::start:
        return line.cols && line.rows && *line.cols >= 1 && *line.cols <= PtyFrame::maxCols
               && *line.rows >= 1 && *line.rows <= PtyFrame::maxRows;
    case PhoneCall::awake:
        return line.on.has_value();
    case PhoneCall::list:
    case PhoneCall::leave:
    case PhoneCall::power:
        break;
    }
    return true;
}

} // namespace

std::optional<PhoneCallLine> readPhoneCall(std::string_view text) {
    auto line = decodeRecordExactly<PhoneCallLine>(text, maxPhoneMessage);
    return line && hasWhatItNeeds(*line) ? line : std::nullopt;
}

} // namespace velmo
