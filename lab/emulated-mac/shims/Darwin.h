#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>

/// Translates Darwin's numbers to Linux's and back, and reads the arguments of a "..." as Darwin
/// passes them.
namespace velmo {

/// Returns `errno` as the executable sees it, in Darwin's numbers (XNU's <sys/errno.h>).
int* darwinErrno();

int darwinErrorOf(int linuxError);
int linuxErrorOf(int darwinError);

/// XNU's <sys/signal.h>.
int darwinSignalOf(int linuxSignal);
int linuxSignalOf(int darwinSignal);

/// XNU's <sys/fcntl.h>.
int linuxOpenFlagsOf(int darwinFlags);
int darwinOpenFlagsOf(int linuxFlags);

/// Passes on the result of a call that returns -1 for an error, and keeps the error.
template<class Result>
Result keepError(Result result) {
    if (result == Result(-1))
        *darwinErrno() = darwinErrorOf(errno);
    return result;
}

/// A call of the C library that is the same on both systems except for the numbers of its errors.
template<auto Function>
struct Translated;

template<class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Translated<Function> {
    static Result call(Arguments... arguments) { return keepError(Function(arguments...)); }
};

/// The arguments of a "..." as a list of this system's. Darwin's own list is the address of the
/// stack, where all the arguments lie, eight bytes each (AAPCS64, "The va_list type").
class VariadicList {
public:
    explicit VariadicList(void* stack) {
        struct {
            void* stack;
            void* generalTop;
            void* vectorTop;
            int generalOffset;
            int vectorOffset;
        } const fields{stack, stack, stack, 0, 0};

        static_assert(sizeof(std::va_list) == sizeof fields);
        std::memcpy(&list_, &fields, sizeof fields);
    }

    [[nodiscard]] std::va_list& get() { return list_; }

private:
    std::va_list list_;
};

} // namespace velmo

/// Defines the entry of a function with "...": Darwin's arm64 callers put all its arguments on the
/// stack ("Writing ARM64 code for Apple platforms"), so the handler gets the stack's address in the
/// register after those of the named parameters.
#define VELMO_VARIADIC(entry, firstFree, handler)                                                  \
    extern "C" void entry();                                                                       \
    asm(".globl " #entry "\n" #entry ":\n mov x" #firstFree ", sp\n b " #handler "\n")
