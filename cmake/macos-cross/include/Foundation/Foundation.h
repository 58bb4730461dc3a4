#pragma once

/// The part of Foundation that the project calls, for the cross build alone. Written from the
/// public documentation; each group names the framework's own header and the macOS version that
/// brought it.

#import <objc/NSObject.h>

// NSObjCRuntime.h, macOS 10.10; the Swift names 10.11
#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")
#define NS_SWIFT_NAME(name) __attribute__((swift_name(#name)))

// NSString.h, macOS 10.0
typedef NSUInteger NSStringEncoding;

enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
+ (instancetype)stringWithFormat:(NSString*)format, ...;
@property(readonly) const char* UTF8String;
@end

// NSException.h, macOS 10.0
__attribute__((objc_exception))
@interface NSException : NSObject
@property(readonly, copy) NSString* reason;
@end

// NSProcessInfo.h, macOS 10.0; the thermal state 10.10.3
typedef NSInteger NSProcessInfoThermalState;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSProcessInfoThermalState thermalState;
@end

// NSError.h, macOS 10.2
@class NSError;

// NSXPCConnection.h, macOS 10.8; the code-signing requirement 13.0
typedef NSUInteger NSXPCConnectionOptions;

enum : NSXPCConnectionOptions { NSXPCConnectionPrivileged = 1 << 12 };

@interface NSXPCInterface : NSObject
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol;
@end

@class NSXPCListenerEndpoint;

@interface NSXPCConnection : NSObject
- (instancetype)initWithListenerEndpoint:(NSXPCListenerEndpoint*)endpoint;
- (instancetype)initWithMachServiceName:(NSString*)name options:(NSXPCConnectionOptions)options;
@property(retain) NSXPCInterface* exportedInterface;
@property(retain) id exportedObject;
@property(retain) NSXPCInterface* remoteObjectInterface;
@property(readonly) pid_t processIdentifier;
@property(readonly) uid_t effectiveUserIdentifier;
- (id)remoteObjectProxyWithErrorHandler:(void (^)(NSError* error))handler;
@property(copy) void (^interruptionHandler)(void);
@property(copy) void (^invalidationHandler)(void);
- (void)setCodeSigningRequirement:(NSString*)requirement;
- (void)resume;
- (void)invalidate;
@end

@class NSXPCListener;

@protocol NSXPCListenerDelegate <NSObject>
@optional
- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection;
@end

@interface NSXPCListener : NSObject
+ (NSXPCListener*)anonymousListener;
- (instancetype)initWithMachServiceName:(NSString*)name;
@property(weak) id<NSXPCListenerDelegate> delegate;
@property(readonly, retain) NSXPCListenerEndpoint* endpoint;
- (void)resume;
@end
