// Declarations for the Apple-code syntax check only: the Objective-C base and the Foundation
// classes this project uses, written from Apple's public documentation. Only what the
// project's sources call is declared, so that a misspelt or unknown selector is an error.
// Not a usable SDK header.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>
#include <stdint.h>

typedef signed char BOOL;
#define nil nullptr
#define Nil nullptr
#define YES ((BOOL)1)
#define NO ((BOOL)0)
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double CGFloat;

typedef struct CGPoint {
    CGFloat x;
    CGFloat y;
} CGPoint;
typedef struct CGSize {
    CGFloat width;
    CGFloat height;
} CGSize;
typedef struct CGRect {
    CGPoint origin;
    CGSize size;
} CGRect;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    NSRect r;
    r.origin.x = x;
    r.origin.y = y;
    r.size.width = w;
    r.size.height = h;
    return r;
}

static inline NSSize NSMakeSize(CGFloat w, CGFloat h) {
    NSSize s;
    s.width = w;
    s.height = h;
    return s;
}

@class NSString;

@protocol NSObject
- (BOOL)isEqual:(id)object;
@end

@protocol NSCopying
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
+ (instancetype)new;
- (instancetype)init;
- (BOOL)isEqual:(id)object;
// Key-value coding.
- (void)setValue:(id)value forKey:(NSString*)key;
@end

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying>
+ (instancetype)stringWithUTF8String:(const char*)nullTerminatedCString;
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)len
                     encoding:(NSStringEncoding)encoding;
@property(readonly) const char* UTF8String;
@property(readonly) NSUInteger length;
@end

@interface NSNumber : NSObject <NSCopying>
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
+ (NSNumber*)numberWithLong:(long)value;
+ (NSNumber*)numberWithUnsignedLong:(unsigned long)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
+ (NSNumber*)numberWithInteger:(NSInteger)value;
@end

@interface NSNull : NSObject
+ (NSNull*)null;
@end

@interface NSArray<__covariant ObjectType> : NSObject
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)cnt;
@property(readonly) NSUInteger count;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects
                              forKeys:(const id<NSCopying>[])keys
                                count:(NSUInteger)cnt;
@end

@interface NSData : NSObject
@property(readonly) const void* bytes;
@property(readonly) NSUInteger length;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSURL : NSObject <NSCopying>
+ (instancetype)fileURLWithPath:(NSString*)path;
+ (instancetype)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDir;
+ (instancetype)URLWithString:(NSString*)URLString;
@property(readonly, copy) NSString* absoluteString;
@property(readonly, copy) NSString* path;
@property(readonly, getter=isFileURL) BOOL fileURL;
@end

@interface NSURLRequest : NSObject
@property(readonly, copy) NSURL* URL;
@end

@interface NSNotification : NSObject
@end

@interface NSAttributedString : NSObject
- (instancetype)initWithString:(NSString*)str attributes:(NSDictionary<NSString*, id>*)attrs;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
- (NSURL*)URLForResource:(NSString*)name withExtension:(NSString*)ext;
- (NSURL*)URLForResource:(NSString*)name
           withExtension:(NSString*)ext
            subdirectory:(NSString*)subpath;
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (NSString*)stringForKey:(NSString*)defaultName;
- (void)setObject:(id)value forKey:(NSString*)defaultName;
@end

// Option sets are plain integers with named bits, as in the real headers under C++.
typedef NSUInteger NSJSONWritingOptions;
enum : NSJSONWritingOptions {
    NSJSONWritingPrettyPrinted = 1,
    NSJSONWritingSortedKeys = 2,
    NSJSONWritingFragmentsAllowed = 4,
};

@interface NSJSONSerialization : NSObject
+ (BOOL)isValidJSONObject:(id)obj;
+ (NSData*)dataWithJSONObject:(id)obj options:(NSJSONWritingOptions)opt error:(NSError**)error;
@end

typedef enum : NSInteger {
    NSProcessInfoThermalStateNominal,
    NSProcessInfoThermalStateFair,
    NSProcessInfoThermalStateSerious,
    NSProcessInfoThermalStateCritical,
} NSProcessInfoThermalState;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) unsigned long long physicalMemory;
@property(readonly) NSUInteger activeProcessorCount;
@property(readonly) NSProcessInfoThermalState thermalState;
@property(readonly, getter=isLowPowerModeEnabled) BOOL lowPowerModeEnabled;
@end
