#include "app/fake_shell.hpp"

namespace velmora::testing {

void FakeShell::createMainWindow(const std::string& text, Size contentSize) {
    windowCreated = true;
    title = text;
    const auto size = frameSizeForContent(contentSize);
    frame.width = size.width;
    frame.height = size.height;
}

void FakeShell::setWindowTitle(const std::string& text) {
    title = text;
    ++titleChanges;
}

Size FakeShell::frameSizeForContent(Size content) const {
    return Size{content.width, content.height + titleBarHeight};
}

void FakeShell::setWindowFrame(const Rect& next, bool animate) {
    frame = next;
    frameChanges.push_back(FrameChange{next, animate});
}

void FakeShell::showMainWindow(Size contentSize) {
    const auto size = frameSizeForContent(contentSize);
    frame.width = size.width;
    frame.height = size.height;
    visible = true;
}

std::optional<std::filesystem::path> FakeShell::pageFile(std::string_view name) const {
    if (!shippedPages.contains(std::string(name))) return std::nullopt;
    return resources / (std::string(name) + ".html");
}

void FakeShell::loadPage(WebView view, const std::filesystem::path& file,
                         const std::filesystem::path& readAccess) {
    loads.push_back(Load{view, file, readAccess});
}

void FakeShell::setDocumentStartScript(WebView view, const std::string& source) {
    documentStartScripts[view] = source;
    ++documentStartInstalls;
}

void FakeShell::evaluate(WebView view, const std::string& script) {
    evaluations.push_back(Evaluation{view, script});
}

void FakeShell::setMenuItemChecked(MenuAction action, bool isChecked) {
    checked[action] = isChecked;
}

void FakeShell::createHeatItem(const std::string& firstTitle,
                               const std::string& documentStartScript, Size /*popoverSize*/) {
    heatItemCreated = true;
    heatItemFirstTitle = firstTitle;
    popoverScript = documentStartScript;
}

void FakeShell::setHeatItemTitle(const std::string& text, HeatColor color) {
    heatTitle = std::make_pair(text, color);
}

void FakeShell::showCountdownItem(const std::string& text, Rgb color) {
    if (!countdownItem) ++countdownItemsCreated;
    countdownItem = std::make_pair(text, color);
}

bool FakeShell::openURL(const std::string& url) {
    openedURLs.push_back(url);
    return true;
}

std::vector<std::string> FakeShell::pagesLoaded(WebView view) const {
    std::vector<std::string> names;
    for (const auto& load : loads) {
        if (load.view == view) names.push_back(load.file.stem().string());
    }
    return names;
}

std::vector<std::string> FakeShell::scripts(WebView view) const {
    std::vector<std::string> found;
    for (const auto& evaluation : evaluations) {
        if (evaluation.view == view) found.push_back(evaluation.script);
    }
    return found;
}

void FakeShell::clearRecords() {
    frameChanges.clear();
    loads.clear();
    evaluations.clear();
    sounds.clear();
    sheets.clear();
    announcements.clear();
    openedURLs.clear();
    appliedAppearances.clear();
    statuses.clear();
    titleChanges = 0;
}

}  // namespace velmora::testing
