#pragma once

#include "core/power/HoldReport.h"

#include "client/PowerLink.h"
#include <asio/io_context.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmo {

/// Asks the power daemon one thing after the other and waits for each answer, but not for ever:
/// what is waited for is said after `untilWaitIsTold`, and a silent daemon is given up after 30.
class Conversation {
public:
    static constexpr double untilWaitIsTold = 2.0; ///< seconds

    enum class Failure {
        unreachable, ///< no daemon can be reached
        gone,        ///< it went away without an answer
        silent,
    };

    template<class T>
    using Answer = std::expected<T, Failure>;

    Conversation(asio::io_context& context, PowerLink& link,
                 std::function<void(std::string_view)> say)
        : context_(context), link_(link), say_(std::move(say)) {}

    Answer<bool> release();

    /// `gone` may mean a daemon of before this call; the conversation goes on by a new connection.
    Answer<HoldReport> report();

private:
    /// Lets the call be made and waits until it sets the answer.
    template<class T, class Call>
    Answer<T> ask(const Call& call);

    asio::io_context& context_;
    PowerLink& link_;
    std::function<void(std::string_view)> say_;
    std::shared_ptr<VelmoPowerProtocol> daemon_;
    bool hasAnswered_ = false;
    bool isLost_ = false;
};

/// Says it in words.
std::string_view failureText(Conversation::Failure failure);

} // namespace velmo
