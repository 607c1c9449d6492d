// Must fail the check: a menu action whose selector no class declares.
// expect-error: undeclared selector 'menuExpnad:'
#import <AppKit/AppKit.h>

void wire(NSMenu* menu) {
    [menu addItemWithTitle:@"Expand" action:@selector(menuExpnad:) keyEquivalent:@"e"];
}
