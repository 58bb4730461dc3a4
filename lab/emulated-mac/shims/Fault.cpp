#include "lab/emulated-mac/shims/Fault.h"

#include <unistd.h>

#include <string>

namespace velmo {

void note(std::string_view text) {
    const std::string line = "· " + std::string(text) + "\n";
    // A line is written by one call, so that lines of several threads stay whole.
    static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
}

void endRun(std::string_view text) {
    note("UNUSABLE " + std::string(text));
    ::_exit(EmulatorStatus::unusable);
}

void misuse(std::string_view text) {
    note("MISUSE " + std::string(text));
    ::_exit(EmulatorStatus::misused);
}

} // namespace velmo
