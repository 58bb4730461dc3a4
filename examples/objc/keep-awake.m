/// Keeps the Mac awake until Ctrl-C, in plain Objective-C: keep-awake TEAM, where TEAM is the team
/// that signed both this program and the daemon. The hold ends with the connection; a program that
/// goes on without it calls releaseWithReply:, but only while it has the hold, since that ends
/// anybody's.

#import "platform/xpc/VelmoPowerProtocol.h"

#include <dispatch/dispatch.h>
#include <stdio.h>

static const int64_t batteryFloor = 20; // percent
static NSXPCConnection* connection;

static void hold(void);

static void after(int64_t seconds, dispatch_block_t block) {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, seconds * (int64_t)NSEC_PER_SEC),
                   dispatch_get_main_queue(), block);
}

static void tryAgain(const char* why) {
    printf("no hold: %s\n", why);
    after(5, ^{
      hold();
    });
}

/// Returns the service for one call, which ends either in its reply or in the error handler. After
/// an error the same connection reaches the daemon that launchd starts next.
static id<VelmoPowerProtocol> service(void) {
    return [connection remoteObjectProxyWithErrorHandler:^(NSError* error) {
      (void)error;
      tryAgain("the daemon can't be reached");
    }];
}

static void beatLater(void) {
    after(10, ^{
      [service() heartbeatWithReply:^(BOOL ok) {
        if (ok)
            beatLater();
        else
            tryAgain("it has ended");
      }];
    });
}

static void hold(void) {
    [service() holdWithBatteryFloor:batteryFloor
                              reply:^(BOOL ok, NSString* reason) {
                                if (!ok) {
                                    tryAgain(reason.UTF8String);
                                } else {
                                    printf("holding\n");
                                    beatLater();
                                }
                              }];
}

int main(int count, char** arguments) {
    if (count != 2) {
        fprintf(stderr, "usage: keep-awake TEAM\n");
        return 64;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    connection = [[NSXPCConnection alloc] initWithMachServiceName:@VELMO_POWER_MACH_SERVICE
                                                          options:NSXPCConnectionPrivileged];
    connection.remoteObjectInterface =
        [NSXPCInterface interfaceWithProtocol:@protocol(VelmoPowerProtocol)];
    NSString* const format = @"anchor apple generic and certificate leaf[subject.OU] = \"%s\""
                             @" and identifier \"VelmoPowerDaemon\"";
    [connection setCodeSigningRequirement:[NSString stringWithFormat:format, arguments[1]]];
    [connection resume];
    hold();
    dispatch_main();
}
