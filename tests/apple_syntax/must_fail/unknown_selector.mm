// Must fail the check: NSSound has no "plays" method.
// expect-error: declares the selector 'plays'
#import <AppKit/AppKit.h>

void playTwice() {
    [[NSSound soundNamed:@"Tink"] plays];
}
