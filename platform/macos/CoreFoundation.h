#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// CoreFoundation's objects as this code takes and owns them.
namespace velmo {

/// Owns what a function with Copy or Create in its name returned, null included.
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

    /// For functions that answer through a pointer; only while nothing is owned.
    [[nodiscard]] Ref* out() { return &object_; }

private:
    Ref object_ = nullptr;
};

/// Tells whether the object is there and of the type.
bool isOfType(CFTypeRef object, CFTypeID type);

// Each is absent for null and for an object of another type.
std::optional<bool> booleanIn(CFTypeRef object);
std::optional<std::int64_t> integerIn(CFTypeRef object);
std::optional<std::string> textIn(CFTypeRef object); ///< UTF-8; absent too for a lone surrogate

/// Ill-formed UTF-8 is repaired; null only when memory is short.
Owned<CFStringRef> stringOf(std::string_view text);

} // namespace velmo
