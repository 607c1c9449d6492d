// Declarations for the Apple-code syntax check only: the AppKit classes, functions and
// constants this project uses, written from Apple's public documentation. Only what the
// project's sources call is declared. Not a usable SDK header.
#pragma once

#import <Foundation/Foundation.h>

@class NSWindow, NSMenu, NSScreen, NSAppearance;

typedef NSString* NSAttributedStringKey;
extern const NSAttributedStringKey NSForegroundColorAttributeName;
extern const NSAttributedStringKey NSFontAttributeName;

@interface NSResponder : NSObject
@end

@interface NSView : NSResponder
@property NSRect frame;
@property NSRect bounds;
@end

@interface NSControl : NSView
@property(weak) id target;
@property SEL action;
@end

@interface NSButton : NSControl
@property(copy) NSString* title;
@property(copy) NSAttributedString* attributedTitle;
@end

@interface NSStatusBarButton : NSButton
@end

@interface NSViewController : NSResponder
- (instancetype)init;
@property(strong) NSView* view;
@end

@interface NSScreen : NSObject
@property(class, readonly, strong) NSScreen* mainScreen;
@property(readonly) NSRect visibleFrame;
@end

// An option set: a plain integer with named bits, as in the real header under C++.
typedef NSUInteger NSWindowStyleMask;
enum : NSWindowStyleMask {
    NSWindowStyleMaskBorderless = 0,
    NSWindowStyleMaskTitled = 1 << 0,
    NSWindowStyleMaskClosable = 1 << 1,
    NSWindowStyleMaskMiniaturizable = 1 << 2,
    NSWindowStyleMaskResizable = 1 << 3,
};

typedef enum : NSUInteger {
    NSBackingStoreRetained = 0,
    NSBackingStoreNonretained = 1,
    NSBackingStoreBuffered = 2,
} NSBackingStoreType;

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(copy) NSString* title;
@property(strong) NSView* contentView;
@property(readonly) NSRect frame;
@property(readonly, strong) NSScreen* screen;
@property(readonly, getter=isVisible) BOOL visible;
- (NSRect)frameRectForContentRect:(NSRect)contentRect;
- (void)setFrame:(NSRect)frameRect display:(BOOL)flag animate:(BOOL)animateFlag;
- (void)setContentSize:(NSSize)size;
- (void)center;
- (void)makeKeyAndOrderFront:(id)sender;
@end

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
@property(weak) id target;
@property SEL action;
@property NSInteger tag;
@property NSControlStateValue state;
@property(strong) NSMenu* submenu;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
- (NSMenuItem*)addItemWithTitle:(NSString*)string
                         action:(SEL)selector
                  keyEquivalent:(NSString*)charCode;
@end

typedef enum : NSInteger {
    NSApplicationActivationPolicyRegular,
    NSApplicationActivationPolicyAccessory,
    NSApplicationActivationPolicyProhibited,
} NSApplicationActivationPolicy;

@class NSApplication;

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(weak) id<NSApplicationDelegate> delegate;
@property(strong) NSMenu* mainMenu;
@property(strong) NSAppearance* appearance;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)flag;
- (void)run;
- (void)terminate:(id)sender;
@end

extern NSApplication* NSApp;

typedef NSString* NSAppearanceName;
extern const NSAppearanceName NSAppearanceNameAqua;
extern const NSAppearanceName NSAppearanceNameDarkAqua;

@interface NSAppearance : NSObject
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name;
@end

@interface NSColor : NSObject
@property(class, strong, readonly) NSColor* labelColor;
@property(class, strong, readonly) NSColor* systemYellowColor;
@property(class, strong, readonly) NSColor* systemRedColor;
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red
                             green:(CGFloat)green
                              blue:(CGFloat)blue
                             alpha:(CGFloat)alpha;
@end

typedef CGFloat NSFontWeight;
extern const NSFontWeight NSFontWeightSemibold;
extern const NSFontWeight NSFontWeightBold;

@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight;
+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight;
@end

@interface NSStatusItem : NSObject
@property(readonly, strong) NSStatusBarButton* button;
@end

extern const CGFloat NSVariableStatusItemLength;

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

typedef enum : NSInteger {
    NSPopoverBehaviorApplicationDefined = 0,
    NSPopoverBehaviorTransient = 1,
    NSPopoverBehaviorSemitransient = 2,
} NSPopoverBehavior;

typedef enum : NSUInteger {
    NSRectEdgeMinX = 0,
    NSRectEdgeMinY = 1,
    NSRectEdgeMaxX = 2,
    NSRectEdgeMaxY = 3,
} NSRectEdge;

@interface NSPopover : NSResponder
- (instancetype)init;
@property(strong) NSViewController* contentViewController;
@property NSSize contentSize;
@property NSPopoverBehavior behavior;
@property(readonly, getter=isShown) BOOL shown;
- (void)showRelativeToRect:(NSRect)positioningRect
                    ofView:(NSView*)positioningView
             preferredEdge:(NSRectEdge)preferredEdge;
- (void)performClose:(id)sender;
@end

typedef NSInteger NSModalResponse;
typedef enum : NSUInteger {
    NSAlertStyleWarning = 0,
    NSAlertStyleInformational = 1,
    NSAlertStyleCritical = 2,
} NSAlertStyle;

@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property NSAlertStyle alertStyle;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (void)beginSheetModalForWindow:(NSWindow*)sheetWindow
               completionHandler:(void (^)(NSModalResponse returnCode))handler;
@end

typedef NSString* NSSoundName;

@interface NSSound : NSObject
+ (NSSound*)soundNamed:(NSSoundName)name;
- (instancetype)initWithContentsOfURL:(NSURL*)url byReference:(BOOL)byRef;
- (BOOL)play;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end

typedef NSString* NSAccessibilityNotificationName;
typedef NSString* NSAccessibilityNotificationUserInfoKey;
extern const NSAccessibilityNotificationName NSAccessibilityAnnouncementRequestedNotification;
extern const NSAccessibilityNotificationUserInfoKey NSAccessibilityAnnouncementKey;
extern const NSAccessibilityNotificationUserInfoKey NSAccessibilityPriorityKey;
typedef enum : NSInteger {
    NSAccessibilityPriorityLow = 10,
    NSAccessibilityPriorityMedium = 50,
    NSAccessibilityPriorityHigh = 90,
} NSAccessibilityPriorityLevel;

#ifdef __cplusplus
extern "C" {
#endif
void NSAccessibilityPostNotificationWithUserInfo(
    id element, NSAccessibilityNotificationName notification,
    NSDictionary<NSAccessibilityNotificationUserInfoKey, id>* userInfo);
#ifdef __cplusplus
}
#endif
