#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// Reads and owns CoreFoundation's objects.
namespace velmo {

/// Owns an object that a function with Copy or Create in its name returned, or null.
template<class Ref>
class Owned {
public:
    Owned() = default;

    explicit Owned(Ref object) : object_(object) {}

    Owned(Owned&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

    Owned& operator=(Owned&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    ~Owned() {
        if (object_)
            CFRelease(object_);
    }

    explicit operator bool() const { return object_ != nullptr; }

    [[nodiscard]] Ref get() const { return object_; }

    /// Returns where a function can put the object that it hands out. Must be called while this
    /// object owns nothing.
    [[nodiscard]] Ref* out() { return &object_; }

private:
    Ref object_ = nullptr;
};

/// Tells whether the object is not null and is of the type.
bool isOfType(CFTypeRef object, CFTypeID type);

// These functions return nothing for null and for an object of another type.
std::optional<bool> booleanIn(CFTypeRef object);
std::optional<std::int64_t>
integerIn(CFTypeRef object);                         ///< absent too for what 64 bits can't express
std::optional<std::string> textIn(CFTypeRef object); ///< UTF-8; absent too for a lone surrogate

/// Makes a string of the text, with ill-formed UTF-8 repaired; null only if memory is short.
Owned<CFStringRef> stringOf(std::string_view text);

} // namespace velmo
