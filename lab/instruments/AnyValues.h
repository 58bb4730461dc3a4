#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>

namespace velmo {

/// Draws random values for a test of a property that must be true of all values. Values near the
/// borders of their types come more often than by chance. The same seed draws the same values on
/// every system.
class AnyValues {
public:
    /// `size` is the greatest number of pieces in a text or list.
    AnyValues(std::uint64_t seed, std::size_t size) : random_(seed), size_(size) {}

    /// Returns a number below the limit.
    std::size_t below(std::size_t limit) { return random_() % limit; }

    bool boolean() { return below(2) == 0; }

    /// Returns a bit pattern of any length, or a border.
    template<std::integral T>
    T integer() {
        using Limits = std::numeric_limits<T>;
        const T borders[] = {Limits::min(), Limits::max(), T{}, T{1}, static_cast<T>(-1)};
        if (below(4) == 0)
            return borders[below(std::size(borders))];
        return static_cast<T>(random_() >> below(64));
    }

    /// Returns a finite number: any bit pattern, or one with few digits.
    double finiteReal() {
        if (below(3) == 0)
            return static_cast<double>(integer<std::int32_t>()) / 8;
        for (;;) {
            const auto value = std::bit_cast<double>(random_());
            if (value - value == 0)
                return value;
        }
    }

    std::size_t listSize() { return below(size_ + 1); }

    /// Returns any bytes, with whole and broken pieces of UTF-8 among them.
    std::string bytes() {
        using namespace std::string_view_literals;
        static constexpr auto pieces = std::to_array<std::string_view>(
            {"\0"sv, "\n", "\r\n", "\"\\/", "\x1F\x7F", "\xC3\xA9", "e\xCC\x81", "\xE2\x80\xA8",
             "\xE2\x80\x8D", "\xF0\x9F\x91\xA8", "\xF0\x9F\x87\xA9", "\xE1\x84\x80\xE1\x85\xA1",
             "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC0\xAF", "\xF0\x9F", "\x80"});
        std::string result;
        for (std::size_t count = listSize(); count > 0; --count) {
            if (boolean())
                result += pieces[below(pieces.size())];
            else
                result += static_cast<char>(below(boolean() ? 128 : 256));
        }
        return result;
    }

private:
    std::mt19937_64 random_;
    std::size_t size_;
};

/// Calls the property a thousand times, with values of all sizes, until it fails. A failure names
/// its seed; with VELMO_SEED in the environment, a run begins with that one.
template<class Property>
void forAny(const Property& property) {
    const char* const fixed = std::getenv("VELMO_SEED");
    const std::uint64_t first =
        fixed != nullptr ? std::strtoull(fixed, nullptr, 10) : std::random_device()();
    for (std::uint64_t seed = first; seed < first + 1000 && !testing::Test::HasFailure(); ++seed) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, "VELMO_SEED=" + std::to_string(seed));
        // The size follows from the seed alone, so that a failure comes back when a run begins with
        // it.
        property(AnyValues(seed, 1 + seed % 97));
    }
}

} // namespace velmo
