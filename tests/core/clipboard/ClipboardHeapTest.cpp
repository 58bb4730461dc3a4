#include "core/clipboard/ClipboardWrite.h"
#include "tests/core/clipboard/ClipboardBodies.h"

#include <cstdlib>
#include <new>

namespace {

/// The room before each block, which contains the block's size.
constexpr std::size_t header = alignof(std::max_align_t);

// The bytes that this program has allocated with `new` anywhere.
std::size_t liveBytes = 0;
std::size_t maxLiveBytes = 0;

} // namespace

// Every form is replaced, because a sanitizer's own forms do not call one another.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    auto* block = static_cast<std::size_t*>(std::malloc(header + size));
    if (block == nullptr)
        return nullptr;
    *block = size;
    liveBytes += size;
    maxLiveBytes = std::max(maxLiveBytes, liveBytes);
    return reinterpret_cast<char*>(block) + header;
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void* operator new(std::size_t size) {
    void* pointer = operator new(size, std::nothrow);
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete(void* pointer) noexcept {
    if (pointer == nullptr)
        return;
    void* block = static_cast<char*>(pointer) - header;
    liveBytes -= *static_cast<std::size_t*>(block);
    std::free(block);
}

void operator delete[](void* pointer) noexcept {
    operator delete(pointer);
}

void operator delete(void* pointer, std::size_t /*size*/) noexcept {
    operator delete(pointer);
}

void operator delete[](void* pointer, std::size_t /*size*/) noexcept {
    operator delete(pointer);
}

void operator delete(void* pointer, const std::nothrow_t& /*tag*/) noexcept {
    operator delete(pointer);
}

void operator delete[](void* pointer, const std::nothrow_t& /*tag*/) noexcept {
    operator delete(pointer);
}

namespace velmo {
namespace {

/// Parses the body and returns the largest number of bytes that were allocated at once meanwhile,
/// without those that were allocated before.
std::size_t heapToParse(std::string_view body) {
    const std::size_t before = liveBytes;
    maxLiveBytes = before;
    EXPECT_TRUE(ClipboardWrite::parse(bytesOf(body)));
    return maxLiveBytes - before;
}

TEST(ClipboardHeap, ALargeBodyIsNotCopied) {
    for (const bool escaped : {false, true}) {
        const std::string body = imageBody(image(5000000), escaped ? "\\/" : "/");
        const std::size_t heap = heapToParse(body);
        EXPECT_GT(heap, 5000000U) << "the image itself";
        EXPECT_LT(heap, body.size()) << escaped;
    }
    const std::string body = textBody(times(mebibyte, "\\u0041"));
    EXPECT_LT(heapToParse(body), body.size());
}

TEST(ClipboardHeap, IgnoredMembersTakeAtMostFortyTimesTheirLength) {
    const struct {
        std::string ignored;
        std::size_t times;
    } cases[] = {
        {'"' + std::string(mebibyte, 'x') + '"', 15},
        {"[" + times(mebibyte / 6, "1e999,") + "1]", 40},
    };

    for (const auto& [ignored, most] : cases) {
        const std::string body = R"({"text":"a","x":)" + ignored + '}';
        EXPECT_LT(heapToParse(body), most * body.size()) << most;
    }
}

} // namespace
} // namespace velmo
