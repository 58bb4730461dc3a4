/// libSystem's terminals (<termios.h>, XNU's <sys/termios.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace velmo {

namespace {

struct DarwinTermios {
    std::uint64_t input;
    std::uint64_t output;
    std::uint64_t control;
    std::uint64_t local;
    std::array<std::uint8_t, 20> keys;
    std::uint64_t inputSpeed;
    std::uint64_t outputSpeed;
};

static_assert(sizeof(DarwinTermios) == 72);

struct Flag {
    tcflag_t onLinux;
    std::uint64_t onDarwin;
};

constexpr auto inputFlags = std::to_array<Flag>({
    {IGNBRK, 0x1},
    {BRKINT, 0x2},
    {IGNPAR, 0x4},
    {PARMRK, 0x8},
    {INPCK, 0x10},
    {ISTRIP, 0x20},
    {INLCR, 0x40},
    {IGNCR, 0x80},
    {ICRNL, 0x100},
    {IXON, 0x200},
    {IXOFF, 0x400},
    {IXANY, 0x800},
    {IMAXBEL, 0x2000},
    {IUTF8, 0x4000},
});

constexpr auto outputFlags = std::to_array<Flag>({{OPOST, 0x1}, {ONLCR, 0x2}});

constexpr auto controlFlags = std::to_array<Flag>({
    {CS6, 0x100},
    {CS7, 0x200},
    {CSTOPB, 0x400},
    {CREAD, 0x800},
    {PARENB, 0x1000},
    {PARODD, 0x2000},
    {HUPCL, 0x4000},
    {CLOCAL, 0x8000},
});

constexpr auto localFlags = std::to_array<Flag>({
    {ECHOKE, 0x1},
    {ECHOE, 0x2},
    {ECHOK, 0x4},
    {ECHO, 0x8},
    {ECHONL, 0x10},
    {ECHOPRT, 0x20},
    {ECHOCTL, 0x40},
    {ISIG, 0x80},
    {ICANON, 0x100},
    {IEXTEN, 0x400},
    {TOSTOP, 0x400000},
    {NOFLSH, 0x80000000},
});

struct Key {
    std::size_t onLinux;
    std::size_t onDarwin;
};

constexpr auto keys = std::to_array<Key>({
    {VEOF, 0},
    {VEOL, 1},
    {VEOL2, 2},
    {VERASE, 3},
    {VWERASE, 4},
    {VKILL, 5},
    {VREPRINT, 6},
    {VINTR, 8},
    {VQUIT, 9},
    {VSUSP, 10},
    {VSTART, 12},
    {VSTOP, 13},
    {VLNEXT, 14},
    {VDISCARD, 15},
    {VMIN, 16},
    {VTIME, 17},
});

constexpr std::uint8_t darwinNoKey = 0xFF; // _POSIX_VDISABLE

std::uint64_t darwinFlags(std::span<const Flag> rows, tcflag_t flags) {
    std::uint64_t translated = 0;
    for (const Flag& row : rows)
        translated |= (flags & row.onLinux) == row.onLinux ? row.onDarwin : 0;
    return translated;
}

bool isCount(const Key& key) {
    return key.onLinux == VMIN || key.onLinux == VTIME;
}

tcflag_t linuxFlags(std::span<const Flag> rows, std::uint64_t flags, tcflag_t before) {
    for (const Flag& row : rows) {
        before &= ~row.onLinux;
        before |= (flags & row.onDarwin) == row.onDarwin ? row.onLinux : 0;
    }
    return before;
}

int settings(int terminal, DarwinTermios* to) {
    termios read{};
    if (keepError(::tcgetattr(terminal, &read)) != 0)
        return -1;
    *to = {.input = darwinFlags(inputFlags, read.c_iflag),
           .output = darwinFlags(outputFlags, read.c_oflag),
           .control = darwinFlags(controlFlags, read.c_cflag),
           .local = darwinFlags(localFlags, read.c_lflag),
           .keys = {},
           .inputSpeed = 0,
           .outputSpeed = 0};
    to->keys.fill(darwinNoKey);
    for (const Key& key : keys) {
        const cc_t value = read.c_cc[key.onLinux];
        if (isCount(key) || value != _POSIX_VDISABLE)
            to->keys.at(key.onDarwin) = value;
    }
    return 0;
}

/// TCSANOW, TCSADRAIN and TCSAFLUSH have the same numbers; flags that have no row stay.
int changeSettings(int terminal, int when, const DarwinTermios* from) {
    termios wanted{};
    if (keepError(::tcgetattr(terminal, &wanted)) != 0)
        return -1;
    wanted.c_iflag = linuxFlags(inputFlags, from->input, wanted.c_iflag);
    wanted.c_oflag = linuxFlags(outputFlags, from->output, wanted.c_oflag);
    wanted.c_lflag = linuxFlags(localFlags, from->local, wanted.c_lflag);
    for (const Key& key : keys) {
        const std::uint8_t value = from->keys.at(key.onDarwin);
        wanted.c_cc[key.onLinux] = isCount(key) || value != darwinNoKey ? value : _POSIX_VDISABLE;
    }
    return keepError(::tcsetattr(terminal, when, &wanted));
}

/// cfmakeraw(3), as Libc's gen/termios.c has it.
void makeRaw(DarwinTermios* to) {
    constexpr std::uint64_t rawInput = 0x2 | 0x8 | 0x20 | 0x40 | 0x80 | 0x100 | 0x200;
    constexpr std::uint64_t rawLocal = 0x8 | 0x10 | 0x80 | 0x100 | 0x400;
    to->input &= ~rawInput;
    to->output &= ~std::uint64_t{1};
    to->local &= ~rawLocal;
    to->keys.at(16) = 1;
    to->keys.at(17) = 0;
}

int openTerminal(int flags) {
    return keepError(::posix_openpt(linuxOpenFlagsOf(flags)));
}

char* nameOrError(char* name) {
    if (name == nullptr)
        *darwinErrno() = darwinErrorOf(errno);
    return name;
}

char* otherSide(int terminal) {
    return nameOrError(::ptsname(terminal));
}

char* nameOf(int terminal) {
    return nameOrError(::ttyname(terminal));
}

constexpr auto shims = std::to_array<Shim>({
    {"_cfmakeraw", address<makeRaw>},
    {"_getpgrp", address<::getpgrp>},
    {"_grantpt", address<Translated<::grantpt>::call>},
    {"_posix_openpt", address<openTerminal>},
    {"_ptsname", address<otherSide>},
    {"_tcgetattr", address<settings>},
    {"_tcsetattr", address<changeSettings>},
    {"_ttyname", address<nameOf>},
    {"_unlockpt", address<Translated<::unlockpt>::call>},
    {"_tcgetpgrp", address<Translated<::tcgetpgrp>::call>},
});

} // namespace

Shims systemTerminalShims() {
    return shims;
}

} // namespace velmo
