#include "tests/core/clipboard/LiveHeap.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace velmo::LiveHeap {

namespace {

/// Before each block stands its size.
constexpr std::size_t header = alignof(std::max_align_t);

} // namespace

Count& count() {
    static Count only;
    return only;
}

} // namespace velmo::LiveHeap

using velmo::LiveHeap::count;
using velmo::LiveHeap::header;

// The array and nothrow forms call these.
void* operator new(std::size_t size) {
    auto* block = static_cast<std::size_t*>(std::malloc(header + size));
    if (block == nullptr)
        throw std::bad_alloc();
    *block = size;
    count().now += size;
    count().peak = std::max(count().peak, count().now);
    return reinterpret_cast<char*>(block) + header;
}

void operator delete(void* pointer) noexcept {
    if (pointer == nullptr)
        return;
    void* block = static_cast<char*>(pointer) - header;
    count().now -= *static_cast<std::size_t*>(block);
    std::free(block);
}

void operator delete(void* pointer, std::size_t /*size*/) noexcept {
    operator delete(pointer);
}
