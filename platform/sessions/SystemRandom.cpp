#include "platform/sessions/SystemRandom.h"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace velmo {

void fillWithRandomBytes(std::span<std::uint8_t> bytes) {
    constexpr std::size_t most = 256; // bytes that the system gives at once
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), most));
        if (::getentropy(part.data(), part.size()) != 0)
            std::abort();
        bytes = bytes.subspan(part.size());
    }
}

} // namespace velmo
