#include "platform/posix/SignalPipe.h"

#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/SignalSender.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace velmo {

namespace {

/// The descriptor that the handler writes to. A handler can learn it only from a global.
volatile std::sig_atomic_t handlersEnd = -1;

void handle(int signal, siginfo_t* info, void* /*context*/) {
    const int error = errno;
    const SignalPipe::News news{.signal = signal, .fromTerminal = isFromTerminal(*info)};
    // A full pipe drops the signal: thousands of others wait in it already.
    static_cast<void>(::write(handlersEnd, &news, sizeof news) == sizeof news);
    errno = error;
}

bool neverWaits(int descriptor) {
    return ::fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0;
}

} // namespace

SignalPipe::SignalPipe(std::span<const int> signals) {
    auto pipe = makePipe();
    if (!pipe || !neverWaits(pipe->readEnd.get()) || !neverWaits(pipe->writeEnd.get()))
        return;
    readEnd_ = std::move(pipe->readEnd);
    writeEnd_ = std::move(pipe->writeEnd);
    handlersEnd = writeEnd_.get();
    for (const int signal : signals)
        take(signal);
}

SignalPipe::~SignalPipe() {
    struct sigaction action{};
    for (int signal = 1; signal < NSIG; ++signal) {
        const bool ours = ::sigaction(signal, nullptr, &action) == 0
                          && (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == handle;
        action = {};
        action.sa_handler = SIG_DFL;
        if (ours)
            ::sigaction(signal, &action, nullptr);
    }
    handlersEnd = -1;
}

void SignalPipe::take(int signal) {
    struct sigaction action{};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigfillset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

std::optional<SignalPipe::News> SignalPipe::next() {
    News news;
    const auto size = retryInterrupted([&] { return ::read(readEnd_.get(), &news, sizeof news); });
    return size == sizeof news ? std::optional(news) : std::nullopt;
}

} // namespace velmo
