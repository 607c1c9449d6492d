#include "app/cocoa/cocoa_shell_parts.hpp"

#include "app/cocoa/menu_tags.hpp"
#include "app/cocoa/page_message.hpp"

using velmora::CocoaShell;
using velmora::WebView;

namespace {

/// The body as the JSON text of a one-element array, or nothing when it holds a value JSON
/// cannot carry (an array can always be written; a bare string or number not on every system).
std::optional<std::string> wrappedBodyJSON(id body) {
    NSArray* wrapped = @[ body != nil ? body : [NSNull null] ];
    if (![NSJSONSerialization isValidJSONObject:wrapped]) return std::nullopt;
    NSData* data = [NSJSONSerialization dataWithJSONObject:wrapped options:0 error:nil];
    if (data == nil) return std::nullopt;
    return std::string(static_cast<const char*>(data.bytes), data.length);
}

std::optional<std::string> frameAddress(WKFrameInfo* frame) {
    NSURL* url = frame.request.URL;
    if (url == nil) return std::nullopt;
    return velmora::utf8Text(url.absoluteString);
}

}  // namespace

@implementation VelmoraShellTarget {
    CocoaShell::Parts* _parts;
    WebView _view;
}

- (instancetype)initWithParts:(CocoaShell::Parts*)parts view:(WebView)view {
    self = [super init];
    if (self != nil) {
        _parts = parts;
        _view = view;
    }
    return self;
}

- (void)userContentController:(WKUserContentController*)controller
      didReceiveScriptMessage:(WKScriptMessage*)message {
    if (!_parts->events.message) return;
    _parts->events.message(velmora::pageMessageFrom(
        _view, velmora::utf8Text(message.name), wrappedBodyJSON(message.body),
        message.frameInfo.isMainFrame, frameAddress(message.frameInfo)));
}

- (void)webView:(WKWebView*)webView didFinishNavigation:(WKNavigation*)navigation {
    if (_parts->events.pageFinished) _parts->events.pageFinished(_view);
}

- (void)menuItemChosen:(NSMenuItem*)sender {
    const auto action = velmora::menuActionOfTag(static_cast<long>(sender.tag));
    if (action && _parts->events.menu) _parts->events.menu(*action);
}

- (void)heatItemClicked:(id)sender {
    if (_parts->events.heatItemClicked) _parts->events.heatItemClicked();
}

@end

namespace velmora {

WKWebView* makeWebView(NSRect frame, VelmoraShellTarget* target, WebView view) {
    WKWebViewConfiguration* configuration = [[WKWebViewConfiguration alloc] init];
    WKUserContentController* content = configuration.userContentController;
    for (const auto name : messageHandlerNames(view)) {
        [content addScriptMessageHandler:target name:nsText(name)];
    }
    WKWebView* web = [[WKWebView alloc] initWithFrame:frame configuration:configuration];
    web.navigationDelegate = target;
    return web;
}

CocoaShell::CocoaShell(PlaySound play) : parts_(std::make_unique<Parts>()) {
    parts_->play = std::move(play);
}

CocoaShell::~CocoaShell() {
    // The content controllers hold their handlers; the handlers must not outlive the parts.
    for (WKWebView* web : {parts_->web, parts_->menuWeb}) {
        [web.configuration.userContentController removeAllScriptMessageHandlers];
    }
}

void CocoaShell::connect(ShellEvents events) {
    parts_->events = std::move(events);
}

void CocoaShell::createMainWindow(const std::string& title, Size contentSize) {
    const NSRect content = NSMakeRect(0, 0, contentSize.width, contentSize.height);
    const NSWindowStyleMask style =
        NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable;
    NSWindow* window = [[NSWindow alloc] initWithContentRect:content
                                                   styleMask:style
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO];
    window.releasedWhenClosed = NO;
    window.title = nsText(title);
    parts_->mainTarget = [[VelmoraShellTarget alloc] initWithParts:parts_.get() view:WebView::main];
    parts_->web = makeWebView(content, parts_->mainTarget, WebView::main);
    window.contentView = parts_->web;
    parts_->window = window;
}

std::string CocoaShell::windowTitle() const {
    return utf8Text(parts_->window.title);
}

void CocoaShell::setWindowTitle(const std::string& title) {
    parts_->window.title = nsText(title);
}

Rect CocoaShell::windowFrame() const {
    const NSRect frame = parts_->window.frame;
    return Rect{frame.origin.x, frame.origin.y, frame.size.width, frame.size.height};
}

Size CocoaShell::frameSizeForContent(Size content) const {
    const NSRect frame =
        [parts_->window frameRectForContentRect:NSMakeRect(0, 0, content.width, content.height)];
    return Size{frame.size.width, frame.size.height};
}

std::optional<Rect> CocoaShell::visibleScreenFrame() const {
    NSScreen* screen = parts_->window.screen != nil ? parts_->window.screen : NSScreen.mainScreen;
    if (screen == nil) return std::nullopt;
    const NSRect visible = screen.visibleFrame;
    return Rect{visible.origin.x, visible.origin.y, visible.size.width, visible.size.height};
}

void CocoaShell::setWindowFrame(const Rect& frame, bool animate) {
    [parts_->window setFrame:NSMakeRect(frame.x, frame.y, frame.width, frame.height)
                     display:YES
                     animate:animate ? YES : NO];
}

void CocoaShell::showMainWindow(Size contentSize) {
    [parts_->window setContentSize:NSMakeSize(contentSize.width, contentSize.height)];
    [parts_->window center];
    [parts_->window makeKeyAndOrderFront:nil];
    [NSApp activateIgnoringOtherApps:YES];
}

bool CocoaShell::windowVisible() const {
    return parts_->window.isVisible == YES;
}

std::optional<std::filesystem::path> CocoaShell::pageFile(std::string_view name) const {
    NSURL* url = [NSBundle.mainBundle URLForResource:nsText(name) withExtension:@"html"];
    if (url == nil || !url.isFileURL) return std::nullopt;
    return std::filesystem::path(utf8Text(url.path));
}

void CocoaShell::loadPage(WebView view, const std::filesystem::path& file,
                          const std::filesystem::path& readAccess) {
    [parts_->webView(view) loadFileURL:fileURL(file)
               allowingReadAccessToURL:[NSURL fileURLWithPath:nsText(readAccess.string())
                                                  isDirectory:YES]];
}

void CocoaShell::setDocumentStartScript(WebView view, const std::string& source) {
    WKUserContentController* content = parts_->webView(view).configuration.userContentController;
    [content removeAllUserScripts];
    [content
        addUserScript:[[WKUserScript alloc] initWithSource:nsText(source)
                                             injectionTime:WKUserScriptInjectionTimeAtDocumentStart
                                          forMainFrameOnly:YES]];
}

void CocoaShell::evaluate(WebView view, const std::string& script) {
    [parts_->webView(view) evaluateJavaScript:nsText(script) completionHandler:nil];
}

}  // namespace velmora
