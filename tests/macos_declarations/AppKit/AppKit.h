// SPDX-License-Identifier: MIT
// What platform/macos uses of the framework, and no more.
#pragma once

#import <Foundation/Foundation.h>

typedef enum NSApplicationActivationPolicy : NSInteger {
    NSApplicationActivationPolicyRegular = 0,
    NSApplicationActivationPolicyAccessory = 1,
} NSApplicationActivationPolicy;

@interface NSApplication : NSObject
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

extern NSApplication* NSApp;

@interface NSWorkspace : NSObject
@property(class, readonly) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end
