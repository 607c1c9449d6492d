#include "app/cocoa/cocoa_shell_parts.hpp"

namespace velmora {

void CocoaShell::playSound(std::string_view name) {
    if (parts_->play) parts_->play(std::string(name));
}

void CocoaShell::showSheet(const AlertSpec& wanted) {
    NSAlert* alert = [[NSAlert alloc] init];
    alert.messageText = nsText(wanted.message);
    alert.informativeText = nsText(wanted.informative);
    alert.alertStyle = NSAlertStyleInformational;
    [alert addButtonWithTitle:nsText(wanted.button)];
    [alert beginSheetModalForWindow:parts_->window completionHandler:nil];
}

void CocoaShell::announce(const std::string& text) {
    NSDictionary* info = @{
        NSAccessibilityAnnouncementKey : nsText(text),
        NSAccessibilityPriorityKey : @(NSAccessibilityPriorityHigh),
    };
    NSAccessibilityPostNotificationWithUserInfo(
        parts_->window, NSAccessibilityAnnouncementRequestedNotification, info);
}

bool CocoaShell::openURL(const std::string& url) {
    NSURL* address = [NSURL URLWithString:nsText(url)];
    if (address == nil) return false;
    return [NSWorkspace.sharedWorkspace openURL:address] == YES;
}

void CocoaShell::applyAppearance(AppearancePref pref) {
    switch (pref) {
        case AppearancePref::light:
            NSApp.appearance = [NSAppearance appearanceNamed:NSAppearanceNameAqua];
            return;
        case AppearancePref::dark:
            NSApp.appearance = [NSAppearance appearanceNamed:NSAppearanceNameDarkAqua];
            return;
        case AppearancePref::autoTheme:
            break;
    }
    NSApp.appearance = nil;  // the system's own
}

void CocoaShell::terminate() {
    [NSApp terminate:nil];
}

}  // namespace velmora
