#include "lab/emulated-mac/loader/ThreadLocals.h"

#include <cstdint>
#include <cstring>
#include <memory>

extern "C" {
void threadLocalVariable();
void* threadLocalAddress(const std::uint64_t* descriptor);
}

asm(R"(
.globl threadLocalVariable
threadLocalVariable:
    stp x29, x30, [sp, #-16]!
    mov x29, sp
    stp x1, x2, [sp, #-16]!
    stp x3, x4, [sp, #-16]!
    stp x5, x6, [sp, #-16]!
    stp x7, x8, [sp, #-16]!
    stp x9, x10, [sp, #-16]!
    stp x11, x12, [sp, #-16]!
    stp x13, x14, [sp, #-16]!
    stp x15, x18, [sp, #-16]!
    sub sp, sp, #384
    stp q0, q1, [sp]
    stp q2, q3, [sp, #32]
    stp q4, q5, [sp, #64]
    stp q6, q7, [sp, #96]
    stp q16, q17, [sp, #128]
    stp q18, q19, [sp, #160]
    stp q20, q21, [sp, #192]
    stp q22, q23, [sp, #224]
    stp q24, q25, [sp, #256]
    stp q26, q27, [sp, #288]
    stp q28, q29, [sp, #320]
    stp q30, q31, [sp, #352]
    bl threadLocalAddress
    ldp q0, q1, [sp]
    ldp q2, q3, [sp, #32]
    ldp q4, q5, [sp, #64]
    ldp q6, q7, [sp, #96]
    ldp q16, q17, [sp, #128]
    ldp q18, q19, [sp, #160]
    ldp q20, q21, [sp, #192]
    ldp q22, q23, [sp, #224]
    ldp q24, q25, [sp, #256]
    ldp q26, q27, [sp, #288]
    ldp q28, q29, [sp, #320]
    ldp q30, q31, [sp, #352]
    add sp, sp, #384
    ldp x15, x18, [sp], #16
    ldp x13, x14, [sp], #16
    ldp x11, x12, [sp], #16
    ldp x9, x10, [sp], #16
    ldp x7, x8, [sp], #16
    ldp x5, x6, [sp], #16
    ldp x3, x4, [sp], #16
    ldp x1, x2, [sp], #16
    ldp x29, x30, [sp], #16
    ret
)");

namespace velmo {

namespace {

struct Descriptor {
    void (*function)();
    std::uint64_t key;
    std::uint64_t offset;
};

/// The values that every thread starts with: "__thread_data", and zeros for "__thread_bss" behind
/// it.
MachOFile::Section data;
MachOFile::Section zeros;

std::size_t sizeOfAll() {
    return data.size == 0 ? zeros.size : zeros.address + zeros.size - data.address;
}

} // namespace

void useThreadLocals(const MachOFile& file) {
    data = file.section("__thread_data");
    zeros = file.section("__thread_bss");
    const MachOFile::Section variables = file.section("__thread_vars");
    auto* const descriptors = reinterpret_cast<Descriptor*>(variables.address);
    for (std::size_t i = 0; i < variables.size / sizeof(Descriptor); ++i)
        descriptors[i].function = threadLocalVariable;
}

extern "C" void* threadLocalAddress(const std::uint64_t* descriptor) {
    thread_local std::unique_ptr<std::uint8_t[]> variables;
    if (!variables) {
        variables = std::make_unique<std::uint8_t[]>(sizeOfAll());
        if (data.size != 0)
            std::memcpy(variables.get(), reinterpret_cast<const void*>(data.address), data.size);
    }
    return variables.get() + reinterpret_cast<const Descriptor*>(descriptor)->offset;
}

} // namespace velmo
