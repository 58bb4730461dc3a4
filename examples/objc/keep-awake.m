/// Keeps the Mac awake until Ctrl-C: keep-awake TEAM, the team that signed both this program and
/// the daemon. The hold ends with the connection. To end it earlier a program calls
/// releaseWithReply:, but only while it has the hold, since the call ends any client's hold.

#import "platform/xpc/ObjcPowerProtocol.h"

#include <dispatch/dispatch.h>
#include <stdio.h>

static const int64_t batteryFloor = 20; // percent
static NSXPCConnection* connection;

static void hold(void);

/// Calls `next` with a pool of its own: the queue's pool is emptied at some unknown time, and this
/// program runs for days.
static void after(int64_t seconds, void (*next)(void)) {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, seconds * (int64_t)NSEC_PER_SEC),
                   dispatch_get_main_queue(), ^{
                     @autoreleasepool {
                         next();
                     }
                   });
}

static void tryAgain(const char* why) {
    printf("no hold: %s\n", why);
    after(5, hold);
}

/// Returns the service for one call, which ends either in its reply or in the error handler. After
/// an error the same connection reaches the daemon that launchd starts next.
static id<VelmoPowerProtocol> service(void) {
    return [connection remoteObjectProxyWithErrorHandler:^(NSError* error) {
      (void)error;
      tryAgain("the daemon can't be reached");
    }];
}

static void beat(void) {
    [service() heartbeatWithReply:^(BOOL ok) {
      if (ok)
          after(10, beat);
      else
          tryAgain("it has ended");
    }];
}

static void hold(void) {
    [service() holdWithBatteryFloor:batteryFloor
                              reply:^(BOOL ok, NSString* reason) {
                                if (!ok) {
                                    tryAgain(reason.UTF8String);
                                } else {
                                    printf("holding\n");
                                    after(10, beat);
                                }
                              }];
}

int main(int count, char** arguments) {
    if (count != 2) {
        fprintf(stderr, "usage: keep-awake TEAM\n");
        return 64;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    @autoreleasepool {
        connection = [[NSXPCConnection alloc] initWithMachServiceName:@VELMO_POWER_MACH_SERVICE
                                                              options:NSXPCConnectionPrivileged];
        connection.remoteObjectInterface =
            [NSXPCInterface interfaceWithProtocol:@protocol(VelmoPowerProtocol)];
        NSString* const format = @"anchor apple generic and certificate leaf[subject.OU] = \"%s\""
                                 @" and identifier \"VelmoPowerDaemon\"";
        [connection setCodeSigningRequirement:[NSString stringWithFormat:format, arguments[1]]];
        [connection resume];
        hold();
    }
    dispatch_main();
}
