#pragma once

#include <unistd.h>

#include <utility>

namespace velmo {

/// Owns a file descriptor, or is empty.
class Descriptor {
public:
    Descriptor() = default;

    /// Takes over the result of open and its kin; a negative number makes an empty object.
    explicit Descriptor(int number) : number_(number) {}

    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, none)) {}

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() { reset(); }

    explicit operator bool() const { return number_ >= 0; }

    [[nodiscard]] int get() const { return number_; }

    /// Hands the descriptor over to the caller, which then closes it.
    [[nodiscard]] int release() { return std::exchange(number_, none); }

    void reset() {
        // close is not retried after EINTR: the number may belong to another thread's file by then.
        if (number_ >= 0)
            ::close(std::exchange(number_, none));
    }

private:
    static constexpr int none = -1;
    int number_ = none;
};

} // namespace velmo
