#pragma once

#include <span>
#include <string_view>

/// Stands in for the imports, by the names that the linker knows. A table lists the shims of one
/// library or framework; a row names an import and its function or variable.
namespace velmo {

struct Shim {
    std::string_view import;
    void* (*address)();
};

/// Returns the address of a function or variable, for a row of a table.
template<auto Symbol>
void* address() {
    return (void*)Symbol; // NOLINT: a function or a variable, const or not
}

using Shims = std::span<const Shim>;

Shims coreFoundationShims();
Shims dispatchShims();
Shims foundationShims();
Shims ioKitShims();
Shims objectiveCShims();
Shims securityShims();
Shims systemEventShims();
Shims systemFileShims();
Shims systemProcessShims();
Shims systemSignalShims();
Shims systemSocketShims();
Shims systemTerminalShims();
Shims systemTextShims();
Shims systemThreadShims();
Shims systemUserShims();
Shims unwindShims();
Shims xpcShims();

/// Returns null for an import without a shim.
void* findShim(std::string_view import);

} // namespace velmo
