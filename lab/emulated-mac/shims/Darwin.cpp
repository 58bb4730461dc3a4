#include "lab/emulated-mac/shims/Darwin.h"

#include "lab/emulated-mac/shims/Fault.h"

#include <fcntl.h>

#include <array>
#include <csignal>
#include <span>
#include <string>

namespace velmo {

namespace {

struct Pair {
    int onLinux;
    int onDarwin;
};

// The numbers 1 to 34 are the same except for 11: EAGAIN on Linux, EDEADLK on Darwin.
constexpr auto errors = std::to_array<Pair>({
    {EAGAIN, 35},     {EDEADLK, 11},       {ENAMETOOLONG, 63}, {ENOLCK, 77},
    {ENOSYS, 78},     {ENOTEMPTY, 66},     {ELOOP, 62},        {EOVERFLOW, 84},
    {EILSEQ, 92},     {ENOTSOCK, 38},      {EDESTADDRREQ, 39}, {EMSGSIZE, 40},
    {EPROTOTYPE, 41}, {ENOPROTOOPT, 42},   {EOPNOTSUPP, 102},  {EAFNOSUPPORT, 47},
    {EADDRINUSE, 48}, {EADDRNOTAVAIL, 49}, {ENETDOWN, 50},     {ECONNABORTED, 53},
    {ECONNRESET, 54}, {ENOBUFS, 55},       {EISCONN, 56},      {ENOTCONN, 57},
    {ETIMEDOUT, 60},  {ECONNREFUSED, 61},  {EALREADY, 37},     {EINPROGRESS, 36},
    {ESTALE, 70},     {EDQUOT, 69},        {ECANCELED, 89},
});
constexpr int lastCommonError = 34;

constexpr auto signals = std::to_array<Pair>({
    {SIGBUS, 10},
    {SIGUSR1, 30},
    {SIGUSR2, 31},
    {SIGCHLD, 20},
    {SIGCONT, 19},
    {SIGSTOP, 17},
    {SIGTSTP, 18},
    {SIGURG, 16},
    {SIGIO, 23},
    {SIGSYS, 12},
});

constexpr auto openFlags = std::to_array<Pair>({
    {O_NONBLOCK, 0x4},
    {O_APPEND, 0x8},
    {O_NOCTTY, 0x20000},
    {O_NOFOLLOW, 0x100},
    {O_CREAT, 0x200},
    {O_TRUNC, 0x400},
    {O_EXCL, 0x800},
    {O_DIRECTORY, 0x100000},
    {O_CLOEXEC, 0x1000000},
});

/// Returns the number itself if no row has it.
int translated(std::span<const Pair> rows, int value, int Pair::* from, int Pair::* to) {
    for (const Pair& row : rows) {
        if (row.*from == value)
            return row.*to;
    }
    return value;
}

int translatedFlags(int value, int Pair::* from, int Pair::* to) {
    int flags = value & O_ACCMODE;
    int rest = value & ~O_ACCMODE;
    for (const Pair& row : openFlags) {
        if ((rest & row.*from) == row.*from) {
            flags |= row.*to;
            rest &= ~(row.*from);
        }
    }
    if (rest != 0 && from == &Pair::onDarwin)
        endRun("flags of open that have no row: " + std::to_string(rest));
    return flags;
}

} // namespace

int* darwinErrno() {
    thread_local int error = 0;
    return &error;
}

int darwinErrorOf(int linuxError) {
    const int error = translated(errors, linuxError, &Pair::onLinux, &Pair::onDarwin);
    if (error == linuxError && error > lastCommonError)
        endRun("an error that has no row: " + std::to_string(error));
    return error;
}

int linuxErrorOf(int darwinError) {
    return translated(errors, darwinError, &Pair::onDarwin, &Pair::onLinux);
}

int darwinSignalOf(int linuxSignal) {
    return translated(signals, linuxSignal, &Pair::onLinux, &Pair::onDarwin);
}

int linuxSignalOf(int darwinSignal) {
    return translated(signals, darwinSignal, &Pair::onDarwin, &Pair::onLinux);
}

int linuxOpenFlagsOf(int darwinFlags) {
    return translatedFlags(darwinFlags, &Pair::onDarwin, &Pair::onLinux);
}

int darwinOpenFlagsOf(int linuxFlags) {
    return translatedFlags(linuxFlags, &Pair::onLinux, &Pair::onDarwin);
}

} // namespace velmo
