#pragma once

#include "core/support/Bytes.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// CoreFoundation, IOKit and Security as far as the plain C++ of the `macos` folders calls them,
/// over objects in memory. Every reference that they hand out under the Create rule must be given
/// back.
namespace velmo::fake {

struct Object;
using Array = std::vector<Object*>;
using Dictionary = std::map<std::string, Object*, std::less<>>;

struct Other {};

/// An object of the frameworks. Texts are UTF-8, with a surrogate encoded like any other character.
struct Object {
    std::variant<Other, bool, std::int64_t, double, std::string, Bytes, Array, Dictionary> value;
    int owed = 0; ///< references handed out and not given back
};

/// The values that the frameworks return; a null object is returned as null.
struct Mac {
    bool hasRootDomain = true;
    std::map<std::string, Object*> rootDomain; ///< its properties
    bool hasPowerManagement = true;
    bool takesSleepRequests = true;
    int sleepRequests = 0;

    bool hasSnapshot = true;
    Object* providingType = nullptr;
    Object* powerSources = nullptr; ///< an array of descriptions, each its own source

    int failingSigningStep = 0; ///< 1 to 3; 0 for none
    Object* signingInformation = nullptr;

    Dictionary propertyLists; ///< by their bytes
    Dictionary bundles;       ///< their dictionaries by path

    int owedServices = 0;
    std::deque<Object> objects;

    template<class Value>
    Object* make(Value value) {
        return &objects.emplace_back(Object{.value = std::move(value)});
    }

    Object* text(std::string_view value) { return make(std::string(value)); }

    Object* number(std::int64_t value) { return make(value); }

    /// Returns how many references and services were not given back, or given back more often than
    /// they were handed out.
    [[nodiscard]] int owed() const;
};

/// The Mac that the frameworks' functions find.
extern Mac* mac;

} // namespace velmo::fake
