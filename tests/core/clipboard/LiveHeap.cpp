#include "tests/core/clipboard/LiveHeap.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace velmo::LiveHeap {

namespace {

/// Before each block stands its size.
constexpr std::size_t header = alignof(std::max_align_t);

void* allocate(std::size_t size) noexcept {
    auto* block = static_cast<std::size_t*>(std::malloc(header + size));
    if (block == nullptr)
        return nullptr;
    *block = size;
    count().now += size;
    count().peak = std::max(count().peak, count().now);
    return reinterpret_cast<char*>(block) + header;
}

void* allocateOrThrow(std::size_t size) {
    void* pointer = allocate(size);
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

void release(void* pointer) noexcept {
    if (pointer == nullptr)
        return;
    void* block = static_cast<char*>(pointer) - header;
    count().now -= *static_cast<std::size_t*>(block);
    std::free(block);
}

} // namespace

Count& count() {
    static Count only;
    return only;
}

} // namespace velmo::LiveHeap

using namespace velmo::LiveHeap;

// Every form: a sanitizer's own do not call one another.
void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}

void operator delete(void* pointer) noexcept {
    release(pointer);
}

void operator delete[](void* pointer) noexcept {
    release(pointer);
}

void operator delete(void* pointer, std::size_t /*size*/) noexcept {
    release(pointer);
}

void operator delete[](void* pointer, std::size_t /*size*/) noexcept {
    release(pointer);
}

void operator delete(void* pointer, const std::nothrow_t& /*tag*/) noexcept {
    release(pointer);
}

void operator delete[](void* pointer, const std::nothrow_t& /*tag*/) noexcept {
    release(pointer);
}
