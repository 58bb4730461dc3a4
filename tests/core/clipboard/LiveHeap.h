#pragma once

#include <cstddef>

/// Counts what is allocated with `new`, everywhere in the test program.
namespace velmo::LiveHeap {

/// Largest number of bytes that were allocated at once while `work` ran, beyond those before.
template<class Work>
std::size_t peakDuring(const Work& work);

struct Count {
    std::size_t now = 0;
    std::size_t peak = 0;
};

Count& count();

template<class Work>
std::size_t peakDuring(const Work& work) {
    const std::size_t before = count().now;
    count().peak = before;
    work();
    return count().peak - before;
}

} // namespace velmo::LiveHeap
