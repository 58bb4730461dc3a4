#pragma once

/// Included before all else: the compiler's constant strings are the Mac's own.
namespace velmo::fake {
const void* constantString(const char* text);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-*): the compiler's own name
#define __builtin___CFStringMakeConstantString(text) velmo::fake::constantString(text)
