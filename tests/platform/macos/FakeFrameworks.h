#pragma once

#include "core/support/Bytes.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <variant>
#include <vector>

/// CoreFoundation, IOKit and Security as far as `platform/macos` calls them from plain C++, over
/// objects in memory. Whatever is handed out under the Create rule must come back.
namespace velmo::fake {

struct Object;
using Array = std::vector<Object*>;
using Dictionary = std::map<std::u16string, Object*>;

struct Other {};

struct Url {
    std::string path;
};

struct Object {
    std::variant<Other, bool, std::int64_t, double, std::u16string, Bytes, Array, Dictionary, Url>
        value;
    int owed = 0; ///< references handed out and not given back
};

/// What the frameworks answer; a null object is the answer null.
struct Mac {
    bool hasRootDomain = true;
    std::map<std::u16string, Object*> rootDomain; ///< its properties
    bool hasPowerManagement = true;
    bool takesSleepRequests = true;
    int sleepRequests = 0;

    bool hasSnapshot = true;
    Object* providingType = nullptr;
    Object* powerSources = nullptr; ///< an array of descriptions, each its own source

    int failingSigningStep = 0; ///< 1 to 3; 0 for none
    Object* signingInformation = nullptr;

    std::map<std::string, Object*> propertyLists; ///< by their bytes
    std::map<std::string, Object*> bundles;       ///< information dictionaries by path

    int owedServices = 0;
    std::deque<Object> objects;

    template<class Value>
    Object* make(Value value) {
        return &objects.emplace_back(Object{.value = std::move(value)});
    }

    /// References and services that were not given back, or more often than they were handed out.
    [[nodiscard]] int owed() const;
};

/// The one that the frameworks' functions find.
extern Mac* mac;

} // namespace velmo::fake
