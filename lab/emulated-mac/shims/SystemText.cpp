/// libSystem's memory, texts, streams and locales (<string.h>, <stdio.h>, <xlocale.h>,
/// <runetype.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cctype>
#include <clocale>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace velmo {

namespace {

/// Makes a list of this system's of arguments that all lie on the stack, eight bytes each (AAPCS64,
/// "The va_list type").
void listOf(std::va_list& list, void* stack) {
    struct {
        void* stack;
        void* generalTop;
        void* vectorTop;
        int generalOffset;
        int vectorOffset;
    } const fields{stack, stack, stack, 0, 0};

    static_assert(sizeof(std::va_list) == sizeof fields);
    std::memcpy(&list, &fields, sizeof fields);
}

template<class Call>
int withList(void* stack, Call call) {
    std::va_list list;
    listOf(list, stack);
    return call(list);
}

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"

extern "C" int emulatedPrintTo(char* to, std::size_t size, const char* format, void* stack) {
    return withList(stack,
                    [&](std::va_list& list) { return std::vsnprintf(to, size, format, list); });
}

extern "C" int emulatedPrintIn(char* to, std::size_t size, void* /*locale*/, const char* format,
                               void* stack) {
    return emulatedPrintTo(to, size, format, stack);
}

extern "C" int emulatedPrint(std::FILE* file, const char* format, void* stack) {
    return withList(stack, [&](std::va_list& list) { return std::vfprintf(file, format, list); });
}

extern "C" int emulatedScan(const char* text, void* /*locale*/, const char* format, void* stack) {
    return withList(stack, [&](std::va_list& list) { return std::vsscanf(text, format, list); });
}

#pragma clang diagnostic pop

VELMO_VARIADIC(variadicPrintTo, 3, emulatedPrintTo);
VELMO_VARIADIC(variadicPrintIn, 4, emulatedPrintIn);
VELMO_VARIADIC(variadicPrint, 2, emulatedPrint);
VELMO_VARIADIC(variadicScan, 3, emulatedScan);

// Darwin's own list of arguments is the stack's address.

/// Characters by the bits of <runetype.h>, for ASCII: the only locale here is "C".
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

int characterHas(int c, std::uint64_t bits) {
    return c >= 0 && c < 128 && (RuneLocale::typeOf(c) & bits) != 0 ? 1 : 0;
}

int characterHasIn(int c, std::uint64_t bits, void* /*locale*/) {
    return characterHas(c, bits);
}

int lowerIn(int c, void* /*locale*/) {
    return std::tolower(c);
}

int upperIn(int c, void* /*locale*/) {
    return std::toupper(c);
}

char theLocale;

void* makeLocale(int /*mask*/, const char* /*name*/, void* /*base*/) {
    return &theLocale;
}

int freeLocale(void* /*locale*/) {
    return 0;
}

int longestCharacter(void* /*locale*/) {
    return 1;
}

lconv* conventions(void* /*locale*/) {
    return std::localeconv();
}

int wideOf(int c, void* /*locale*/) {
    return c >= 0 && c < 128 ? c : -1;
}

/// Of the "C" locale: each byte is a character, and there is no state between them.
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

int compareIn(const char* a, const char* b, void* /*locale*/) {
    return std::strcmp(a, b);
}

double realIn(const char* text, char** end, void* /*locale*/) {
    return std::strtod(text, end);
}

long long integerIn(const char* text, char** end, int base, void* /*locale*/) {
    return std::strtoll(text, end, base);
}

unsigned long long naturalIn(const char* text, char** end, int base, void* /*locale*/) {
    return std::strtoull(text, end, base);
}

void* find(const void* memory, int c, std::size_t size) {
    return const_cast<void*>(std::memchr(memory, c, size));
}

void clear(void* memory, std::size_t size) {
    std::memset(memory, 0, size);
}

void* copyChecked(void* to, const void* from, std::size_t size, std::size_t /*room*/) {
    return std::memcpy(to, from, size);
}

int errorText(int error, char* to, std::size_t size) {
    std::snprintf(to, size, "%s", std::strerror(linuxErrorOf(error)));
    return 0;
}

std::FILE* standardInput = stdin;
std::FILE* standardOutput = stdout;
std::FILE* standardError = stderr;

constexpr auto shims = std::to_array<Shim>({
    {"__DefaultRuneLocale", address<&runes>},
    {"____mb_cur_max_l", address<longestCharacter>},
    {"____tolower_l", address<lowerIn>},
    {"____toupper_l", address<upperIn>},
    {"___error", address<darwinErrno>},
    {"___maskrune", address<characterHas>},
    {"___maskrune_l", address<characterHasIn>},
    {"___memcpy_chk", address<copyChecked>},
    {"___stderrp", address<&standardError>},
    {"___stdinp", address<&standardInput>},
    {"___stdoutp", address<&standardOutput>},
    {"___tolower", address<::tolower>},
    {"___toupper", address<::toupper>},
    {"_aligned_alloc", address<::aligned_alloc>},
    {"_btowc_l", address<wideOf>},
    {"_bzero", address<clear>},
    {"_calloc", address<::calloc>},
    {"_fflush", address<::fflush>},
    {"_fprintf", address<variadicPrint>},
    {"_fputc", address<::fputc>},
    {"_free", address<::free>},
    {"_freelocale", address<freeLocale>},
    {"_fwrite", address<::fwrite>},
    {"_getc", address<::getc>},
    {"_localeconv_l", address<conventions>},
    {"_malloc", address<::malloc>},
    {"_mbtowc_l", address<toWide>},
    {"_memchr", address<find>},
    {"_newlocale", address<makeLocale>},
    {"_realloc", address<::realloc>},
    {"_snprintf", address<variadicPrintTo>},
    {"_snprintf_l", address<variadicPrintIn>},
    {"_sscanf_l", address<variadicScan>},
    {"_strcmp", address<::strcmp>},
    {"_strcoll_l", address<compareIn>},
    {"_strerror_r", address<errorText>},
    {"_strlen", address<::strlen>},
    {"_strncmp", address<::strncmp>},
    {"_strtod", address<::strtod>},
    {"_strtod_l", address<realIn>},
    {"_strtol", address<::strtol>},
    {"_strtold", address<::strtod>}, // a long double is a double there
    {"_strtoll", address<::strtoll>},
    {"_strtoll_l", address<integerIn>},
    {"_strtoul", address<::strtoul>},
    {"_strtoull", address<::strtoull>},
    {"_strtoull_l", address<naturalIn>},
    {"_ungetc", address<::ungetc>},
    {"_vfprintf", address<emulatedPrint>},
    {"_vsnprintf", address<emulatedPrintTo>},
    {"_wcslen", address<::wcslen>},
    {"_wcrtomb_l", address<fromWide>},
    {"_wctob_l", address<wideOf>},
    {"_wmemcmp", address<::wmemcmp>},
});

} // namespace

Shims systemTextShims() {
    return shims;
}

} // namespace velmo
