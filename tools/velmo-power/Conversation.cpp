#include "tools/velmo-power/Conversation.h"

#include "client/HoldKeeper.h"
#include "platform/posix/Clocks.h"

#include <asio/steady_timer.hpp>

#include <optional>
#include <utility>

namespace velmo {

template<class T, class Call>
Conversation::Answer<T> Conversation::ask(const Call& call) {
    if (!daemon_) {
        hasAnswered_ = false;
        loss_.reset();
        daemon_ = link_.connect([this](PowerLink::Loss loss) {
            loss_ = loss;
            context_.stop();
        });
    }
    if (!daemon_)
        return std::unexpected(Failure::unreachable);
    std::optional<T> answer;
    call(*daemon_, [&](T value) {
        answer = std::move(value);
        context_.stop();
    });
    asio::steady_timer telling(context_, Clocks::duration(untilWaitIsTold));
    telling.async_wait([this](const std::error_code& aborted) {
        if (!aborted)
            say_("waiting for the power daemon to answer");
    });
    context_.restart();
    context_.run_for(Clocks::duration(HoldKeeper::patience));
    if (answer) {
        hasAnswered_ = true;
        return *std::move(answer);
    }
    daemon_.reset();
    if (!loss_)
        return std::unexpected(Failure::silent);
    if (*loss_ == PowerLink::Loss::tooManyClients)
        return std::unexpected(Failure::full);
    return std::unexpected(hasAnswered_ ? Failure::gone : Failure::unreachable);
}

Conversation::Answer<bool> Conversation::release() {
    return ask<bool>([](VelmoPowerProtocol& daemon, auto answer) { daemon.release(answer); });
}

Conversation::Answer<HoldReport> Conversation::report() {
    auto report = ask<std::optional<HoldReport>>(
        [](VelmoPowerProtocol& daemon, auto answer) { daemon.report(answer); });
    if (!report)
        return std::unexpected(report.error());
    if (!*report)
        return std::unexpected(Failure::gone);
    return **std::move(report);
}

std::string_view failureText(Conversation::Failure failure) {
    switch (failure) {
    case Conversation::Failure::unreachable:
        return "the power daemon can't be reached";
    case Conversation::Failure::full:
        return "the power daemon has too many clients";
    case Conversation::Failure::gone:
        return "the power daemon went away without an answer";
    case Conversation::Failure::silent:
        return "the power daemon does not answer";
    }
    std::unreachable();
}

} // namespace velmo
