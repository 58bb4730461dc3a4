#pragma once

#include "lab/emulated-mac/shims/ObjectiveC.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// CoreFoundation's objects, which are Objective-C's too: CFRelease is release.
namespace velmo {

struct CFNumber : Object {
    std::int64_t value = 0;
};

struct CFArray : Object {
    std::vector<Object*> values; ///< owned

    CFArray() = default;
    ~CFArray();
    CFArray(const CFArray&) = delete;
    CFArray& operator=(const CFArray&) = delete;
};

struct CFDictionary : Object {
    std::map<std::string, Object*> values; ///< owned, by their text

    CFDictionary() = default;
    ~CFDictionary();
    CFDictionary(const CFDictionary&) = delete;
    CFDictionary& operator=(const CFDictionary&) = delete;

    /// Takes the value over.
    CFDictionary& with(const std::string& key, Object* value);
};

Object* booleanOf(bool value); ///< one of two constants
CFNumber* numberOf(std::int64_t value);
CFArray* arrayOf(std::vector<Object*> values); ///< takes them over
CFDictionary* makeDictionary();

} // namespace velmo
