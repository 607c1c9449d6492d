// Must fail the check: a C++ string where AppKit wants an NSString.
// expect-error: no viable conversion from 'const std::string'
#import <AppKit/AppKit.h>

#include <string>

void title(NSWindow* window, const std::string& text) {
    window.title = text;
}
