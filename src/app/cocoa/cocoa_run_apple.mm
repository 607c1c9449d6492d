#include "app/cocoa/cocoa_run.hpp"

#import <AppKit/AppKit.h>

#include <cstdio>
#include <functional>
#include <memory>

#include "actuators/macos/ns_sound_player.hpp"
#include "app/cocoa/cocoa_main_loop.hpp"
#include "app/cocoa/cocoa_shell.hpp"
#include "app/controller/app_controller.hpp"

namespace {

/// Everything the application is made of, built before the event loop runs and taken down
/// when the application terminates (AppKit then ends the process without unwinding).
struct CocoaApplication {
    velmora::CocoaMainLoop loop;
    velmora::CocoaShell shell{velmora::nsSoundPlayer()};
    velmora::AppController controller;

    CocoaApplication(velmora::LaunchOptions opts, velmora::AppServices services)
        : controller(std::move(opts), shell, loop, std::move(services)) {
        shell.connect(velmora::eventsFor(controller));
    }
};

}  // namespace

/// The application's delegate: starts the controller once AppKit has finished launching,
/// writes the quit line and lets the log finish when the application terminates, and ends the
/// application when its window closes.
@interface VelmoraAppDelegate : NSObject <NSApplicationDelegate>
/// Takes ownership of `application`.
- (instancetype)initWithApplication:(CocoaApplication*)application;
@end

@implementation VelmoraAppDelegate {
    std::unique_ptr<CocoaApplication> _application;
}

- (instancetype)initWithApplication:(CocoaApplication*)application {
    self = [super init];
    if (self != nil) _application.reset(application);
    return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    _application->controller.start();
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    if (!_application) return;
    _application->controller.willTerminate();
    // Destroying the controller writes what the log still holds before the process ends.
    _application.reset();
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender {
    return YES;
}

@end

namespace velmora {

int runCocoa(LaunchOptions opts, PlatformParts parts) {
    @autoreleasepool {
        if (opts.headless) {
            std::fputs("velmora-heat-monitor: --headless is a Linux mode; opening the window\n",
                       stderr);
        }
        NSApplication* application = [NSApplication sharedApplication];
        auto built = std::make_unique<CocoaApplication>(std::move(opts), std::move(parts.services));
        // The application object holds its delegate weakly; this one lives as long as the run.
        VelmoraAppDelegate* delegate =
            [[VelmoraAppDelegate alloc] initWithApplication:built.release()];
        [application setActivationPolicy:NSApplicationActivationPolicyRegular];
        application.delegate = delegate;
        [application run];
    }
    return 0;
}

}  // namespace velmora
