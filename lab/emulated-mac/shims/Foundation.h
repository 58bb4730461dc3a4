#pragma once

#include "lab/emulated-mac/shims/ObjectiveC.h"

#include <string>

/// Foundation's strings, which are CoreFoundation's too, and the process information (NSString.h,
/// NSProcessInfo.h). Texts are UTF-8 here.
namespace velmo {

struct NSString : Object {
    std::string text;
};

/// A string as the compiler lays it down for CFSTR and @"" (CFInternal.h, __CFConstStr).
struct ConstantString : Object {
    std::uintptr_t flags;
    const char* text;
    std::uintptr_t length;
};

extern FrameworkClass nsString;
extern FrameworkClass constantString;

/// Returns a new string; the caller owns it.
Object* stringOf(const std::string& text);

/// Tells whether the object is a string of either kind.
bool isString(const Object* object);

std::string textOf(const Object* string);

} // namespace velmo
