#include "platform/sessions/UserService.h"

namespace velmo {

ServiceJob userServiceJob(const ServiceFacts& facts) {
    return systemdJob(facts);
}

} // namespace velmo
