// SPDX-License-Identifier: MIT
// What platform/macos uses of the framework, and no more, so that a compiler without it can check
// the types.
#pragma once

#define nil nullptr

typedef bool BOOL;
typedef long NSInteger;

__attribute__((objc_root_class))
@interface NSObject
+ (instancetype)alloc;
- (instancetype)init;
@end

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
@property(readonly) const char* UTF8String;
@end

@interface NSURL : NSObject
+ (instancetype)URLWithString:(NSString*)text;
@end

@interface NSError : NSObject
@property(readonly) NSString* domain;
@property(readonly) NSInteger code;
@property(readonly) NSString* localizedDescription;
@end
