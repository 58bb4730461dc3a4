#include "platform/phone/StatePlace.h"

#include "core/support/PathText.h"

namespace velmo {

std::string phoneStatePlace(std::string_view home) {
    return PathText::join(home, ".velmo/velmo-phone");
}

} // namespace velmo
