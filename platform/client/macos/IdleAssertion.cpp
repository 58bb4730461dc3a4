#include "platform/client/macos/IdleAssertion.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

namespace velmo {

namespace {

/// An assertion in force, which the destructor releases. The end of the process releases it too.
class Assertion {
public:
    explicit Assertion(IOPMAssertionID number) : number_(number) {}

    ~Assertion() { IOPMAssertionRelease(number_); }

    Assertion(const Assertion&) = delete;
    Assertion& operator=(const Assertion&) = delete;

private:
    IOPMAssertionID number_;
};

} // namespace

std::shared_ptr<void> preventIdleSleep() {
    IOPMAssertionID number = kIOPMNullAssertionID;
    const IOReturn result =
        IOPMAssertionCreateWithName(kIOPMAssertionTypePreventUserIdleSystemSleep,
                                    kIOPMAssertionLevelOn, CFSTR("velmo-power hold"), &number);
    return result == kIOReturnSuccess ? std::make_shared<Assertion>(number) : nullptr;
}

} // namespace velmo
