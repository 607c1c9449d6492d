// Declarations for the Apple-code syntax check only: the WebKit classes and protocols this
// project uses, written from Apple's public documentation. Not a usable SDK header.
#pragma once

#import <AppKit/AppKit.h>

@class WKWebView, WKUserContentController;

typedef enum : NSInteger {
    WKUserScriptInjectionTimeAtDocumentStart,
    WKUserScriptInjectionTimeAtDocumentEnd,
} WKUserScriptInjectionTime;

@interface WKUserScript : NSObject
- (instancetype)initWithSource:(NSString*)source
                 injectionTime:(WKUserScriptInjectionTime)injectionTime
              forMainFrameOnly:(BOOL)forMainFrameOnly;
@end

@interface WKFrameInfo : NSObject
@property(nonatomic, readonly, getter=isMainFrame) BOOL mainFrame;
@property(nonatomic, readonly, copy) NSURLRequest* request;
@end

@interface WKScriptMessage : NSObject
@property(nonatomic, readonly, copy) id body;
@property(nonatomic, readonly, weak) WKWebView* webView;
@property(nonatomic, readonly, copy) WKFrameInfo* frameInfo;
@property(nonatomic, readonly, copy) NSString* name;
@end

@protocol WKScriptMessageHandler <NSObject>
@required
- (void)userContentController:(WKUserContentController*)userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message;
@end

@interface WKUserContentController : NSObject
- (void)addUserScript:(WKUserScript*)userScript;
- (void)removeAllUserScripts;
- (void)addScriptMessageHandler:(id<WKScriptMessageHandler>)scriptMessageHandler
                           name:(NSString*)name;
- (void)removeAllScriptMessageHandlers;
@end

@interface WKWebViewConfiguration : NSObject
- (instancetype)init;
@property(nonatomic, strong) WKUserContentController* userContentController;
@end

@interface WKNavigation : NSObject
@end

@protocol WKNavigationDelegate <NSObject>
@optional
- (void)webView:(WKWebView*)webView didFinishNavigation:(WKNavigation*)navigation;
@end

@interface WKWebView : NSView
- (instancetype)initWithFrame:(NSRect)frame configuration:(WKWebViewConfiguration*)configuration;
@property(nonatomic, readonly, copy) WKWebViewConfiguration* configuration;
@property(nonatomic, weak) id<WKNavigationDelegate> navigationDelegate;
- (WKNavigation*)loadFileURL:(NSURL*)URL allowingReadAccessToURL:(NSURL*)readAccessURL;
- (void)evaluateJavaScript:(NSString*)javaScriptString
         completionHandler:(void (^)(id result, NSError* error))completionHandler;
@end
