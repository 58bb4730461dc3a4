#include "lab/emulated-mac/loader/Image.h"

#include "lab/emulated-mac/loader/ThreadLocals.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>
#include <string>

/// Registers one function's entry with the unwinder that this program is linked with (LLVM's
/// libunwind).
extern "C" void __unw_add_dynamic_fde(std::uintptr_t entry);

namespace velmo {

namespace {

constexpr std::uint8_t sectionOfInitialisers = 9; // S_MOD_INIT_FUNC_POINTERS

std::uintptr_t lowest = 0;
std::uintptr_t highest = 0;

using Initialiser = void (*)(int count, char** arguments, char** environment, char** apple);
using Main = int (*)(int count, char** arguments, char** environment);

/// Called in place of an import without a shim.
[[noreturn]] void callWithoutShim(const char* name) {
    endRun(std::string("a call without a shim: ") + name);
}

/// Machine code that calls the above with the name: ldr x0, =name; ldr x16, =function; br x16.
void* trapFor(std::string_view name) {
    struct Trap {
        std::uint32_t code[4];
        const char* name;
        void (*function)(const char*);
    };

    constexpr std::size_t count = 1024;
    static Trap* next =
        static_cast<Trap*>(mmap(nullptr, count * sizeof(Trap), PROT_READ | PROT_WRITE | PROT_EXEC,
                                MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    static const Trap* const end = next + count;
    if (next == end)
        throw std::runtime_error("too many imports without a shim");
    *next = {.code = {0x58000080, 0x580000B0, 0xD61F0200, 0xD503201F},
             .name = (new std::string(name))->c_str(),
             .function = callWithoutShim};
    return next++;
}

template<class T>
T* at(std::uint64_t address) {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(address));
}

} // namespace

Image::Image(const MachOFile& file) : file_(file) {
    map(file_);
    bind(file_);
    useThreadLocals(file_);
    registerUnwindTables(file_.section("__eh_frame"));
    __builtin___clear_cache(at<char>(lowest), at<char>(highest));
    keepObjectsIn({at<char>(lowest), at<char>(highest)});
}

void Image::map(const MachOFile& file) {
    for (const MachOFile::Segment& segment : file.segments()) {
        if (segment.name == "__PAGEZERO")
            continue;
        void* const wanted = at<void>(segment.address);
        void* const memory = mmap(wanted, segment.size, PROT_READ | PROT_WRITE | PROT_EXEC,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
        if (memory != wanted)
            throw std::runtime_error("no memory where the executable wants it");
        std::memcpy(memory, file.bytesOf(segment), segment.fileSize);
        lowest = lowest == 0 ? segment.address : std::min(lowest, segment.address);
        highest = std::max(highest, segment.address + segment.size);
    }
}

void Image::bind(const MachOFile& file) {
    std::set<std::string> missing;
    for (const MachOFile::Bind& each : file.binds()) {
        void* shim = findShim(each.symbol);
        if (shim == nullptr && !each.isLazy)
            missing.emplace(each.symbol);
        if (shim == nullptr)
            shim = trapFor(each.symbol);
        *at<std::uint64_t>(each.address) =
            reinterpret_cast<std::uintptr_t>(shim) + static_cast<std::uint64_t>(each.addend);
    }
    std::string names;
    for (const std::string& name : missing)
        names += " " + name;
    if (!names.empty())
        throw std::runtime_error("imports without a shim:" + names);
}

// Functions that the linker describes by compact encodings alone need no entry: they are leaves,
// and nothing is thrown through them.
void Image::registerUnwindTables(const MachOFile::Section& frames) {
    for (auto entry = frames.address; entry < frames.address + frames.size;) {
        const std::uint32_t length = at<std::uint32_t>(entry)[0];
        const std::uint32_t commonEntry = at<std::uint32_t>(entry)[1];
        if (length == 0)
            return;
        if (commonEntry != 0)
            __unw_add_dynamic_fde(entry);
        entry += sizeof length + length;
    }
}

int Image::run(int count, char** arguments, char** environment) const {
    for (const MachOFile::Section& section : file_.sections()) {
        if (section.kind != sectionOfInitialisers)
            continue;
        for (std::size_t i = 0; i < section.size / sizeof(Initialiser); ++i)
            at<Initialiser>(section.address)[i](count, arguments, environment, arguments);
    }
    return reinterpret_cast<Main>(file_.entry())(count, arguments, environment);
}

} // namespace velmo
