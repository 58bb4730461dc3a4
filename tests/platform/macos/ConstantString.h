#pragma once

/// Replaces the compiler's constant strings, which only the Mac has. Included before every other
/// header.
namespace velmo::fake {
const void* constantString(const char* text);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-*): the compiler's own name
#define __builtin___CFStringMakeConstantString(text) velmo::fake::constantString(text)
