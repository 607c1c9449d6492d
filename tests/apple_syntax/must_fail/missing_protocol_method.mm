// Must fail the check: a script message handler without the method its protocol requires.
// expect-error: method 'userContentController:didReceiveScriptMessage:' in protocol
#import <WebKit/WebKit.h>

@interface Handler : NSObject <WKScriptMessageHandler>
@end

@implementation Handler
@end
