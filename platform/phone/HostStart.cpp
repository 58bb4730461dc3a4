#include "platform/phone/HostStart.h"

#include "platform/posix/Io.h"
#include "platform/sessions/PseudoTerminal.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmo {

void startSessionHost(const std::string& program) {
    const pid_t child = ::fork();
    if (child == 0) {
        // The host is a grandchild, so that no process of ours has to wait for its end.
        if (::setsid() < 0 || ::fork() != 0)
            ::_exit(0);
        const int null = ::open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(null, standard);
        closeDescriptorsFrom(STDERR_FILENO + 1);
        ::execl(program.c_str(), "velmo-session", "serve", "--background", nullptr);
        ::_exit(1);
    }
    if (child > 0)
        retryInterrupted([&] { return ::waitpid(child, nullptr, 0); });
}

} // namespace velmo
