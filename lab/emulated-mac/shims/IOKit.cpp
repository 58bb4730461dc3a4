/// IOKit (IOKitLib.h, IOPMLib.h, IOPowerSources.h, IOPSKeys.h) over the facts of the emulated Mac.

#include "lab/emulated-mac/shims/CoreFoundation.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <set>

namespace velmo {

namespace {

constexpr std::uint32_t rootDomainPort = 0x1003;
constexpr std::uint32_t powerManagementPort = 0x1103;

std::uint32_t mainPort = 0;

CFDictionary* matching(const char* name) {
    auto* const dictionary = makeDictionary();
    dictionary->with("IOProviderClass", stringOf(name));
    return dictionary;
}

/// Takes over one reference to the dictionary, as IOKitLib.h says.
std::uint32_t matchingService(std::uint32_t /*port*/, CFDictionary* wanted) {
    const std::string name = textOf(wanted->values.at("IOProviderClass"));
    release(wanted);
    return name == "IOPMrootDomain" ? rootDomainPort : 0;
}

/// Returns an object that the caller owns, as with every "Create" function.
Object* property(std::uint32_t entry, const Object* key, const void* /*allocator*/,
                 std::uint32_t /*options*/) {
    struct Row {
        std::string_view property;
        const char* fact;
    };

    static constexpr auto rows = std::to_array<Row>({
        {"SleepDisabled", "sleep-disabled"},
        {"AppleClamshellState", "lid-shut"},
        {"AppleClamshellCausesSleep", "lid-causes-sleep"},
    });
    if (entry != rootDomainPort)
        misuse("a property of what is no entry of the registry");
    for (const Row& row : rows) {
        if (row.property != textOf(key))
            continue;
        const auto value = fact(row.fact);
        note(std::string(row.property) + " is "
             + (!value          ? "missing"
                : *value == "1" ? "true"
                                : "false"));
        return value ? retain(booleanOf(*value == "1")) : nullptr;
    }
    return nullptr;
}

std::int32_t releasePort(std::uint32_t port) {
    if (port != rootDomainPort)
        misuse("IOObjectRelease of what is no object");
    return 0;
}

std::uint32_t findPowerManagement(std::uint32_t /*port*/) {
    return powerManagementPort;
}

/// IOReturn.h. XNU refuses while sleep is disabled (privateSleepSystem in IOPMrootDomain.cpp).
constexpr auto notPermitted = static_cast<std::int32_t>(0xE00002E2);

std::int32_t sleepNow(std::uint32_t connection) {
    if (connection != powerManagementPort)
        misuse("IOPMSleepSystem over no connection");
    note("the Mac is asked to sleep");
    return factOr("sleep-disabled", 0) == 1 ? notPermitted : 0;
}

std::int32_t closeConnection(std::uint32_t connection) {
    if (connection != powerManagementPort)
        misuse("IOServiceClose of no connection");
    return 0;
}

// Assertions (IOPMLib.h) are numbers; powerd ends them with their process.

std::mutex assertionsMutex; // NOLINT: constant-initialised
std::set<std::uint32_t> assertions;

std::int32_t makeAssertion(const Object* type, std::uint32_t level, const Object* name,
                           std::uint32_t* assertion) {
    const std::lock_guard lock(assertionsMutex);
    static std::uint32_t last = 0;
    *assertion = ++last;
    assertions.insert(last);
    note("assertion " + textOf(type) + " " + std::to_string(level) + ": " + textOf(name));
    return 0;
}

std::int32_t releaseAssertion(std::uint32_t assertion) {
    const std::lock_guard lock(assertionsMutex);
    if (assertions.erase(assertion) == 0)
        misuse("IOPMAssertionRelease of no assertion");
    note("assertion released");
    return 0;
}

// IOPowerSources.h tells no form for the blob and the list: callers only hand them on.

CFDictionary* copySources() {
    auto* const blob = makeDictionary();
    const bool onMains = factOr("mains", 1) == 1;
    blob->with("provider", stringOf(onMains ? "AC Power" : "Battery Power"));
    if (const auto battery = fact("battery")) {
        auto* const source = makeDictionary();
        source->with("Type", stringOf("InternalBattery"))
            .with("Current Capacity", numberOf(factOr("battery", 0)))
            .with("Max Capacity", numberOf(100));
        blob->with("source", source);
    }
    return blob;
}

Object* providingType(const CFDictionary* blob) {
    return blob->values.at("provider");
}

CFArray* copyList(const CFDictionary* blob) {
    std::vector<Object*> list;
    if (blob->values.contains("source"))
        list.push_back(stringOf("source"));
    return arrayOf(std::move(list));
}

Object* description(const CFDictionary* blob, const Object* source) {
    return blob->values.at(textOf(source));
}

constexpr auto shims = std::to_array<Shim>({
    {"_IOObjectRelease", address<releasePort>},
    {"_IOPMAssertionCreateWithName", address<makeAssertion>},
    {"_IOPMAssertionRelease", address<releaseAssertion>},
    {"_IOPMFindPowerManagement", address<findPowerManagement>},
    {"_IOPMSleepSystem", address<sleepNow>},
    {"_IOPSCopyPowerSourcesInfo", address<copySources>},
    {"_IOPSCopyPowerSourcesList", address<copyList>},
    {"_IOPSGetPowerSourceDescription", address<description>},
    {"_IOPSGetProvidingPowerSourceType", address<providingType>},
    {"_IORegistryEntryCreateCFProperty", address<property>},
    {"_IOServiceClose", address<closeConnection>},
    {"_IOServiceGetMatchingService", address<matchingService>},
    {"_IOServiceMatching", address<matching>},
    {"_kIOMainPortDefault", address<&mainPort>},
});

} // namespace

Shims ioKitShims() {
    return shims;
}

} // namespace velmo
