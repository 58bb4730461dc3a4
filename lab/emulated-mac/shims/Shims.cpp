#include "lab/emulated-mac/shims/Shims.h"

#include "lab/emulated-mac/shims/Fault.h"

#include <unwind.h>

#include <array>

namespace velmo {

namespace {

// The executable has a C++ run time of its own, but frames are unwound by the system's.
constexpr auto unwind = std::to_array<Shim>({
    {"__Unwind_DeleteException", address<_Unwind_DeleteException>},
    {"__Unwind_GetIP", address<_Unwind_GetIP>},
    {"__Unwind_GetLanguageSpecificData", address<_Unwind_GetLanguageSpecificData>},
    {"__Unwind_GetRegionStart", address<_Unwind_GetRegionStart>},
    {"__Unwind_RaiseException", address<_Unwind_RaiseException>},
    {"__Unwind_Resume", address<_Unwind_Resume>},
    {"__Unwind_SetGR", address<_Unwind_SetGR>},
    {"__Unwind_SetIP", address<_Unwind_SetIP>},
});

[[noreturn]] void notToBeCalled() {
    endRun("a call of dyld_stub_binder or longjmp");
}

// Functions that the executables refer to but do not call here: every import is bound before the
// start, and PNG is not decoded.
constexpr auto uncalled = std::to_array<Shim>({
    {"_longjmp", address<notToBeCalled>},
    {"dyld_stub_binder", address<notToBeCalled>},
});

} // namespace

Shims unwindShims() {
    return unwind;
}

void* findShim(std::string_view import) {
    const std::array tables = {coreFoundationShims(), dispatchShims(),     foundationShims(),
                               ioKitShims(),          objectiveCShims(),   securityShims(),
                               systemEventShims(),    systemFileShims(),   systemProcessShims(),
                               systemSignalShims(),   systemSocketShims(), systemTerminalShims(),
                               systemTextShims(),     systemThreadShims(), systemUserShims(),
                               unwindShims(),         xpcShims(),          Shims(uncalled)};
    for (const Shims& table : tables) {
        for (const Shim& shim : table) {
            if (shim.import == import)
                return shim.address();
        }
    }
    return nullptr;
}

} // namespace velmo
