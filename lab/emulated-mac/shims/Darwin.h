#pragma once

#include <cerrno>
#include <cstdint>

/// How Darwin's numbers differ from Linux's, and how it passes what a "..." stands for.
namespace velmo {

/// `errno` as the executable sees it, in Darwin's numbers (XNU's <sys/errno.h>).
int* darwinErrno();

int darwinErrorOf(int linuxError);
int linuxErrorOf(int darwinError);

/// XNU's <sys/signal.h>.
int darwinSignalOf(int linuxSignal);
int linuxSignalOf(int darwinSignal);

/// XNU's <sys/fcntl.h>.
int linuxOpenFlagsOf(int darwinFlags);
int darwinOpenFlagsOf(int linuxFlags);

/// Hands on the result of a call that answers -1 for an error, and keeps the error.
template<class Result>
Result keepError(Result result) {
    if (result == Result(-1))
        *darwinErrno() = darwinErrorOf(errno);
    return result;
}

/// A call of the C library that is the same on both systems but for the numbers of its errors.
template<auto Function>
struct Translated;

template<class Result, class... Arguments, Result (*Function)(Arguments...)>
struct Translated<Function> {
    static Result call(Arguments... arguments) { return keepError(Function(arguments...)); }
};

} // namespace velmo

/// Defines the entry of a function with "...": Darwin's arm64 callers put all that it stands for on
/// the stack ("Writing ARM64 code for Apple platforms"), so the handler gets the stack's address in
/// the register after those of the named parameters.
#define VELMO_VARIADIC(entry, firstFree, handler)                                                  \
    extern "C" void entry();                                                                       \
    asm(".globl " #entry "\n" #entry ":\n mov x" #firstFree ", sp\n b " #handler "\n")
