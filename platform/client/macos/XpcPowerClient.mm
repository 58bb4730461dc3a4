#include "platform/client/macos/XpcPowerClient.h"

#include "core/power/PowerService.h"
#include "platform/client/macos/PowerDaemonConnection.h"
#include "platform/macos/CoreFoundation.h"
#include "platform/macos/NSStringText.h"
#include "platform/xpc/PeerRequirement.h"
#include "platform/xpc/XpcProtocol.h"

#include <mutex>
#include <utility>

namespace velmo {

namespace {

/// The only part of a client that the connection's queue touches. The client's destructor shuts it,
/// because replies and errors still come after that, when the thread that they were for may be
/// gone.
class Letterbox {
public:
    using Piece = std::function<void()>;

    explicit Letterbox(std::function<void(Piece)> post) : post_(std::move(post)) {}

    void post(Piece piece) {
        const std::lock_guard lock(mutex_);
        if (post_)
            post_(std::move(piece));
    }

    void shut() {
        const std::lock_guard lock(mutex_);
        post_ = nullptr;
    }

private:
    std::mutex mutex_;
    std::function<void(Piece)> post_;
};

/// The client's side of an XPC connection. Replies and errors come on the connection's own queue,
/// which touches nothing of this object: they are posted to the client's thread, and dropped if the
/// client is gone by then.
class XpcPowerClient final : public VelmoPowerProtocol,
                             public std::enable_shared_from_this<XpcPowerClient> {
    /// Returns a function for the connection's queue, which posts a call of `callback`.
    template<class Callback>
    auto posted(Callback callback) {
        return [self = weak_from_this(), letterbox = letterbox_,
                callback = std::move(callback)](auto... values) {
            letterbox->post([self, callback, values...] {
                if (const auto alive = self.lock(); alive && alive->onLost_)
                    callback(values...);
            });
        };
    }

public:
    XpcPowerClient(NSXPCConnection* connection, ClientContext context, std::function<void()> onLost)
        : connection_(connection),
          letterbox_(std::make_shared<Letterbox>(std::move(context.post))),
          log_(std::move(context.log)),
          onLost_(std::move(onLost)) {}

    ~XpcPowerClient() override {
        letterbox_->shut();
        [connection_ invalidate];
    }

    XpcPowerClient(const XpcPowerClient&) = delete;
    XpcPowerClient& operator=(const XpcPowerClient&) = delete;

    [[nodiscard]] bool open(const std::string& requirement) {
        const bool required = requireOfPeer(connection_, requirement, log_);
        connection_.remoteObjectInterface = powerInterface();
        const auto lost = whenLost();
        connection_.interruptionHandler = ^{
          lost();
        };
        connection_.invalidationHandler = ^{
          lost();
        };
        // Even if the requirement is malformed: the system wants a connection resumed before it is
        // released.
        [connection_ resume];
        return required;
    }

    // The thread that uses the client has no pool of its own, and a proxy is autoreleased.

    void hold(std::int64_t batteryFloor, HoldReply reply) override {
        const auto answer = posted(
            [reply = std::move(reply)](bool ok, const std::string& reason) { reply(ok, reason); });
        @autoreleasepool {
            [daemon(whenLost()) holdWithBatteryFloor:batteryFloor
                                               reply:^(BOOL ok, NSString* reason) {
                                                 answer(ok, textOf(reason));
                                               }];
        }
    }

    void heartbeat(Reply reply) override {
        const auto answer = posted(std::move(reply));
        @autoreleasepool {
            [daemon(whenLost()) heartbeatWithReply:^(BOOL ok) {
              answer(ok);
            }];
        }
    }

    void release(Reply reply) override {
        const auto answer = posted(std::move(reply));
        @autoreleasepool {
            [daemon(whenLost()) releaseWithReply:^(BOOL ok) {
              answer(ok);
            }];
        }
    }

    void report(ReportReply reply) override {
        const auto answer = posted([reply = std::move(reply)](const std::string& line) {
            reply(velmo::decodeRecord<velmo::HoldReport>(line));
        });
        @autoreleasepool {
            [daemon(whenLost()) reportWithReply:^(NSString* line) {
              answer(textOf(line));
            }];
        }
    }

private:
    static std::string textOf(NSString* text) {
        return textIn((__bridge CFTypeRef)text).value_or(std::string());
    }

    /// Returns the daemon's proxy. A call through the proxy ends in its reply or in `failed`, never
    /// in both.
    id<VelmoPowerProtocol> daemon(std::function<void()> failed) {
        return [connection_ remoteObjectProxyWithErrorHandler:^(NSError* /*error*/) {
          failed();
        }];
    }

    std::function<void()> whenLost() {
        return [self = weak_from_this(), letterbox = letterbox_] {
            letterbox->post([self] {
                if (const auto alive = self.lock(); alive && alive->onLost_)
                    std::exchange(alive->onLost_, nullptr)();
            });
        };
    }

    NSXPCConnection* connection_;
    std::shared_ptr<Letterbox> letterbox_;
    std::function<void(std::string_view message)> log_;
    std::function<void()> onLost_; ///< empty once the connection is lost
};

} // namespace

std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemonOver(NSXPCConnection* connection,
                                                             const std::string& requirement,
                                                             ClientContext context,
                                                             std::function<void()> onLost) {
    @autoreleasepool {
        const auto client =
            std::make_shared<XpcPowerClient>(connection, std::move(context), std::move(onLost));
        return client->open(requirement) ? client : nullptr;
    }
}

std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemon(const std::string& requirement,
                                                         ClientContext context,
                                                         std::function<void()> onLost) {
    @autoreleasepool {
        return connectToPowerDaemonOver(
            [[NSXPCConnection alloc] initWithMachServiceName:stringFrom(powerDaemonMachService)
                                                     options:NSXPCConnectionPrivileged],
            requirement, std::move(context), std::move(onLost));
    }
}

} // namespace velmo
