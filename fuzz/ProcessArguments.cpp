#include "platform/posix/ProcessArguments.h"

#include "fuzz/Fuzz.h"

#include <cstring>

namespace velmo::Fuzz {

namespace {

/// The words stand in the bytes, one after the other, and are as many as the bytes say.
void checkProcessArguments(Input input) {
    const std::string_view bytes = input.rest();
    const auto words = parseProcessArguments(bytes);
    if (!words)
        return;
    int count = 0;
    std::memcpy(&count, bytes.data(), sizeof count);
    require(words->size() == static_cast<std::size_t>(count < 0 ? 0 : count));
    std::string together;
    for (const std::string& word : *words)
        together.append(word).push_back('\0');
    require(bytes.contains(together));
}

const Target processArgumentsTarget("ProcessArguments", checkProcessArguments);

} // namespace

} // namespace velmo::Fuzz
