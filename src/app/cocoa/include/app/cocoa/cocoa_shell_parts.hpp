#pragma once

// Objective-C++ only: the AppKit objects behind CocoaShell, shared by its source files.
#import <AppKit/AppKit.h>
#import <WebKit/WebKit.h>

#include <map>
#include <string>

#include "app/cocoa/cocoa_shell.hpp"

/// Receives what AppKit and WebKit report for one web view (and, for the main one, the menus
/// and the heat item) and hands it to the shell's events.
@interface VelmoraShellTarget : NSObject <WKScriptMessageHandler, WKNavigationDelegate>
- (instancetype)initWithParts:(velmora::CocoaShell::Parts*)parts view:(velmora::WebView)view;
- (void)menuItemChosen:(NSMenuItem*)sender;
- (void)heatItemClicked:(id)sender;
@end

namespace velmora {

struct CocoaShell::Parts {
    PlaySound play;
    ShellEvents events;
    NSWindow* window = nil;
    WKWebView* web = nil;
    VelmoraShellTarget* mainTarget = nil;
    WKWebView* menuWeb = nil;
    VelmoraShellTarget* menuTarget = nil;
    NSStatusItem* heatItem = nil;
    NSPopover* popover = nil;
    NSStatusItem* countdownItem = nil;
    std::map<MenuAction, NSMenuItem*> menuItems;

    WKWebView* webView(WebView view) const { return view == WebView::menu ? menuWeb : web; }
};

/// Text across the boundary: invalid UTF-8 becomes an empty string rather than nil.
inline NSString* nsText(std::string_view text) {
    NSString* result = [[NSString alloc] initWithBytes:text.data()
                                                length:text.size()
                                              encoding:NSUTF8StringEncoding];
    return result != nil ? result : @"";
}

inline std::string utf8Text(NSString* text) {
    const char* bytes = text.UTF8String;
    return bytes != nullptr ? std::string(bytes) : std::string();
}

inline NSURL* fileURL(const std::filesystem::path& path) {
    return [NSURL fileURLWithPath:nsText(path.string())];
}

/// A web view with the named handlers, the document-start script added later.
WKWebView* makeWebView(NSRect frame, VelmoraShellTarget* target, WebView view);

}  // namespace velmora
