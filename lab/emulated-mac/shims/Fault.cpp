#include "lab/emulated-mac/shims/Fault.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace velmo {

namespace {

void write(std::string_view text) {
    const std::string line = "· " + std::string(text) + "\n";
    // A line is written by one call, so that lines of several threads stay whole.
    static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
}

} // namespace

void note(std::string_view text) {
    if (std::getenv("EMULATED_QUIETLY") == nullptr)
        write(text);
}

void endRun(std::string_view text) {
    write("UNUSABLE " + std::string(text));
    ::_exit(EmulatorStatus::unusable);
}

void misuse(std::string_view text) {
    write("MISUSE " + std::string(text));
    ::_exit(EmulatorStatus::misused);
}

} // namespace velmo
