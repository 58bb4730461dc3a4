#pragma once

/// The part of XNU's <sys/sysctl.h> that our code uses, for a fake of `sysctl`.

#include <sys/types.h>

#include <cstddef>

constexpr int CTL_KERN = 1;
constexpr int KERN_PROC = 14;
constexpr int KERN_PROC_PID = 1;
constexpr int KERN_PROC_UID = 5;

struct extern_proc {
    pid_t p_pid;
};

struct eproc {
    pid_t e_ppid;
    pid_t e_pgid;
};

struct kinfo_proc {
    extern_proc kp_proc;
    eproc kp_eproc;
};

int sysctl(int* name, unsigned count, void* old, std::size_t* oldSize, void* wanted,
           std::size_t wantedSize);
