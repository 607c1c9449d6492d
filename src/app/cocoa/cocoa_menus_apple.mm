#include "app/cocoa/cocoa_shell_parts.hpp"

#include "app/cocoa/menu_tags.hpp"

namespace velmora {

namespace {

NSMenu* submenuFor(const Submenu& model, VelmoraShellTarget* target,
                   std::map<MenuAction, NSMenuItem*>& items) {
    NSMenu* menu = [[NSMenu alloc] initWithTitle:nsText(model.title)];
    for (const MenuItem& entry : model.items) {
        if (entry.separator()) {
            [menu addItem:[NSMenuItem separatorItem]];
            continue;
        }
        // The key equivalent carries the Command modifier, AppKit's default for it.
        NSMenuItem* item = [menu addItemWithTitle:nsText(entry.title)
                                           action:@selector(menuItemChosen:)
                                    keyEquivalent:nsText(entry.keyEquivalent)];
        item.target = target;
        item.tag = menuTag(*entry.action);
        items[*entry.action] = item;
    }
    return menu;
}

NSAttributedString* titled(const std::string& text, NSColor* color, NSFont* font) {
    return [[NSAttributedString alloc]
        initWithString:nsText(text)
            attributes:@{NSForegroundColorAttributeName : color, NSFontAttributeName : font}];
}

NSColor* systemColor(HeatColor color) {
    switch (color) {
        case HeatColor::yellow:
            return NSColor.systemYellowColor;
        case HeatColor::red:
            return NSColor.systemRedColor;
        case HeatColor::label:
            break;
    }
    return NSColor.labelColor;
}

}  // namespace

void CocoaShell::installMainMenu(const std::vector<Submenu>& menu) {
    NSMenu* main = [[NSMenu alloc] initWithTitle:@""];
    parts_->menuItems.clear();
    for (const Submenu& model : menu) {
        NSMenuItem* holder = [main addItemWithTitle:nsText(model.title)
                                             action:nil
                                      keyEquivalent:@""];
        holder.submenu = submenuFor(model, parts_->mainTarget, parts_->menuItems);
    }
    NSApp.mainMenu = main;
}

void CocoaShell::setMenuItemChecked(MenuAction action, bool checked) {
    const auto found = parts_->menuItems.find(action);
    if (found == parts_->menuItems.end()) return;
    found->second.state = checked ? NSControlStateValueOn : NSControlStateValueOff;
}

void CocoaShell::createHeatItem(const std::string& title, const std::string& documentStartScript,
                                Size popoverSize) {
    NSStatusItem* item =
        [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    item.button.target = parts_->mainTarget;
    item.button.action = @selector(heatItemClicked:);
    item.button.title = nsText(title);
    parts_->heatItem = item;

    const NSRect frame = NSMakeRect(0, 0, popoverSize.width, popoverSize.height);
    parts_->menuTarget = [[VelmoraShellTarget alloc] initWithParts:parts_.get() view:WebView::menu];
    parts_->menuWeb = makeWebView(frame, parts_->menuTarget, WebView::menu);
    // Installed once: later theme changes reach the popover through the theme call.
    setDocumentStartScript(WebView::menu, documentStartScript);
    // The page draws its own background.
    [parts_->menuWeb setValue:@NO forKey:@"drawsBackground"];

    NSViewController* controller = [[NSViewController alloc] init];
    controller.view = parts_->menuWeb;
    NSPopover* popover = [[NSPopover alloc] init];
    popover.contentViewController = controller;
    popover.contentSize = frame.size;
    popover.behavior = NSPopoverBehaviorTransient;
    parts_->popover = popover;
}

void CocoaShell::setHeatItemTitle(const std::string& title, HeatColor color) {
    NSStatusBarButton* button = parts_->heatItem.button;
    if (button == nil) return;
    // Digits of one width, so that the item does not jitter as the temperature changes.
    NSFont* font = [NSFont monospacedDigitSystemFontOfSize:12 weight:NSFontWeightSemibold];
    button.attributedTitle = titled(title, systemColor(color), font);
}

bool CocoaShell::popoverShown() const {
    return parts_->popover.isShown == YES;
}

void CocoaShell::showPopover() {
    NSStatusBarButton* button = parts_->heatItem.button;
    if (parts_->popover == nil || button == nil) return;
    [parts_->popover showRelativeToRect:button.bounds ofView:button preferredEdge:NSRectEdgeMinY];
}

void CocoaShell::closePopover() {
    [parts_->popover performClose:nil];
}

void CocoaShell::showCountdownItem(const std::string& title, Rgb color) {
    if (parts_->countdownItem == nil) {
        parts_->countdownItem =
            [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    }
    NSColor* foreground = [NSColor colorWithCalibratedRed:color.red
                                                    green:color.green
                                                     blue:color.blue
                                                    alpha:1];
    NSFont* font = [NSFont systemFontOfSize:12 weight:NSFontWeightBold];
    parts_->countdownItem.button.attributedTitle = titled(title, foreground, font);
}

void CocoaShell::removeCountdownItem() {
    if (parts_->countdownItem == nil) return;
    [NSStatusBar.systemStatusBar removeStatusItem:parts_->countdownItem];
    parts_->countdownItem = nil;
}

}  // namespace velmora
