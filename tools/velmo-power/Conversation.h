#pragma once

#include "client/PowerLink.h"
#include "core/power/HoldReport.h"

#include <asio/io_context.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Asks the power daemon one thing after the other and waits for every answer, but not for ever.
/// After `untilWaitIsTold` people are told of the wait; after `HoldKeeper::patience`, 30 seconds, a
/// silent daemon is given up.
class Conversation {
public:
    static constexpr double untilWaitIsTold = 2.0; ///< seconds

    enum class Failure {
        unreachable, ///< no daemon can be reached
        full,        ///< the daemon has too many clients
        gone,        ///< the daemon went away without an answer
        silent,
    };

    template<class T>
    using Answer = std::expected<T, Failure>;

    Conversation(asio::io_context& context, PowerLink& link,
                 std::function<void(std::string_view)> say)
        : context_(context), link_(link), say_(std::move(say)) {}

    Answer<bool> release();

    /// A daemon older than this call ends the connection, which gives `gone`; the conversation goes
    /// on by a new connection. A report that can't be decoded gives `gone` too.
    Answer<HoldReport> report();

private:
    /// Makes the call and waits until its reply sets the answer.
    template<class T, class Call>
    Answer<T> ask(const Call& call);

    asio::io_context& context_;
    PowerLink& link_;
    std::function<void(std::string_view)> say_;
    std::shared_ptr<VelmoPowerProtocol> daemon_;
    bool hasAnswered_ = false;
    std::optional<PowerLink::Loss> loss_;
};

/// Returns the failure in words.
std::string_view failureText(Conversation::Failure failure);

} // namespace velmo
