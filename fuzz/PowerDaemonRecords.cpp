#include "core/power/PowerDaemonRecord.h"
#include "fuzz/Fuzz.h"

namespace velmo {

void Fuzz::target(Input input) {
    const std::string_view json = input.rest();
    const auto decode = [](std::string_view text) { return decodeRecord<PowerDaemonRecord>(text); };
    requireSpellingIsIgnored(json, decode);
    if (const auto record = decode(json))
        require(decode(encodeJson(*record).value()) == record);
}

} // namespace velmo
