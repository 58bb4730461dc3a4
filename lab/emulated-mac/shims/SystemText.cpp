/// libSystem's memory, texts, streams and locales (<string.h>, <stdio.h>, <xlocale.h>,
/// <runetype.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cctype>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>

namespace velmo {

namespace {

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"

int printTo(char* to, std::size_t size, const char* format, void* stack) {
    VariadicList list(stack);
    return std::vsnprintf(to, size, format, list.get());
}

extern "C" int emulatedPrintIn(char* to, std::size_t size, void* /*locale*/, const char* format,
                               void* stack) {
    return printTo(to, size, format, stack);
}

extern "C" int emulatedPrintTo(char* to, std::size_t size, const char* format, void* stack) {
    return printTo(to, size, format, stack);
}

int print(std::FILE* file, const char* format, void* stack) {
    VariadicList list(stack);
    return std::vfprintf(file, format, list.get());
}

extern "C" int emulatedPrint(const char* format, void* stack) {
    return print(stdout, format, stack);
}

#pragma clang diagnostic pop

VELMO_VARIADIC(variadicPrint, 1, emulatedPrint);
VELMO_VARIADIC(variadicPrintIn, 4, emulatedPrintIn);
VELMO_VARIADIC(variadicPrintTo, 3, emulatedPrintTo);

static_assert(_IOFBF == 0 && _IOLBF == 1 && _IONBF == 2, "as in Apple's <stdio.h>");

/// The kinds of ASCII characters, by the bits of <runetype.h>: the only locale here is "C".
struct RuneLocale {
    static constexpr std::size_t typesOffset = 60;

    std::array<std::uint8_t, 3208> bytes{};

    RuneLocale() {
        for (int c = 0; c < 128; ++c) {
            const std::uint32_t type = typeOf(c);
            std::memcpy(bytes.data() + typesOffset + static_cast<std::size_t>(c) * sizeof type,
                        &type, sizeof type);
        }
    }

    static std::uint32_t typeOf(int c) {
        struct Row {
            int (*is)(int);
            std::uint32_t bit;
        };

        static constexpr auto rows = std::to_array<Row>({
            {::isalpha, 0x100},
            {::iscntrl, 0x200},
            {::isdigit, 0x400},
            {::isgraph, 0x800},
            {::islower, 0x1000},
            {::ispunct, 0x2000},
            {::isspace, 0x4000},
            {::isupper, 0x8000},
            {::isxdigit, 0x10000},
            {::isblank, 0x20000},
            {::isprint, 0x40000},
        });
        std::uint32_t type = 0;
        for (const Row& row : rows)
            type |= row.is(c) != 0 ? row.bit : 0;
        return type;
    }
};

RuneLocale runes;

/// Converts by the "C" locale: every byte is a character, without state between them.
int toWide(wchar_t* to, const char* from, std::size_t size, void* /*locale*/) {
    if (from == nullptr || size == 0)
        return 0;
    if (to != nullptr)
        *to = static_cast<unsigned char>(*from);
    return *from == '\0' ? 0 : 1;
}

std::size_t fromWide(char* to, wchar_t c, void* /*state*/, void* /*locale*/) {
    if (to == nullptr)
        return 1;
    *to = static_cast<char>(c);
    return 1;
}

void* find(const void* memory, int c, std::size_t size) {
    return const_cast<void*>(std::memchr(memory, c, size));
}

/// strerror_r(3) as POSIX has it.
int errorText(int error, char* to, std::size_t size) {
    std::snprintf(to, size, "%s", std::strerror(linuxErrorOf(error)));
    return 0;
}

void clear(void* memory, std::size_t size) {
    std::memset(memory, 0, size);
}

std::FILE* standardInput = stdin;
std::FILE* standardOutput = stdout;
std::FILE* standardError = stderr;

constexpr auto shims = std::to_array<Shim>({
    {"__DefaultRuneLocale", address<&runes>},
    {"___error", address<darwinErrno>},
    {"___stderrp", address<&standardError>},
    {"___stdinp", address<&standardInput>},
    {"___stdoutp", address<&standardOutput>},
    {"_aligned_alloc", address<::aligned_alloc>},
    {"_bzero", address<clear>},
    {"_calloc", address<::calloc>},
    {"_fflush", address<::fflush>},
    {"_fputc", address<::fputc>},
    {"_free", address<::free>},
    {"_fwrite", address<::fwrite>},
    {"_malloc", address<::malloc>},
    {"_mbtowc_l", address<toWide>},
    {"_memchr", address<find>},
    {"_printf", address<variadicPrint>},
    {"_puts", address<::puts>},
    {"_realloc", address<::realloc>},
    {"_setvbuf", address<::setvbuf>},
    {"_snprintf", address<variadicPrintTo>},
    {"_snprintf_l", address<variadicPrintIn>},
    {"_strcmp", address<::strcmp>},
    {"_strncmp", address<::strncmp>},
    {"_strftime", address<::strftime>},
    {"_strerror_r", address<errorText>},
    {"_strlen", address<::strlen>},
    {"_strtoll", address<::strtoll>},
    {"_vfprintf", address<print>},
    {"_vsnprintf", address<printTo>},
    {"_wcrtomb_l", address<fromWide>},
});

} // namespace

Shims systemTextShims() {
    return shims;
}

} // namespace velmo
