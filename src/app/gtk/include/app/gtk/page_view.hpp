#pragma once

#include <webkit2/webkit2.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/core/shell.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Bodies larger than this are dropped before they are parsed: no page of ours sends more
/// than a few hundred bytes, and a hostile one must not make the watchdog hold megabytes.
inline constexpr std::size_t maxMessageBytes = 16 * 1024;

/// Prepares the shared web context before any web process starts: the web-process sandbox
/// with read access to the bundled pages only. Returns the line to log when the sandbox
/// cannot be used here (the pages then run without it).
std::optional<std::string> prepareWebContext(const std::filesystem::path& resources);

/// One WebKit view showing the application's own pages, with its own user content manager,
/// the named script message handlers and the origin rule: it navigates only to the bundled
/// page files, opens no windows and loads no other address.
class PageView {
  public:
    struct Callbacks {
        std::function<void(PageMessage)> message;
        std::function<void()> finished;
    };

    /// `handlers`: the message names this view accepts ("size", "stagec", … for the main
    /// window; only "theme" for the menu popup). `pages` is the folder of the bundled pages.
    PageView(WebView kind, const std::vector<std::string>& handlers, std::filesystem::path pages,
             LogSink log, Callbacks callbacks);
    ~PageView();
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;
    PageView(PageView&&) = delete;
    PageView& operator=(PageView&&) = delete;

    GtkWidget* widget() const { return GTK_WIDGET(view_); }
    WebKitWebView* webView() const { return view_; }

    void load(const std::filesystem::path& file, const std::filesystem::path& readAccess);
    void setDocumentStartScript(const std::string& source);
    void evaluate(const std::string& script);
    /// The address the view shows now; absent before the first load.
    std::optional<std::string> currentURI() const;
    /// True when `uri` names a page file inside the bundled pages folder.
    bool isBundledPage(const std::string& uri) const;

  private:
    static void onMessage(WebKitUserContentManager* manager, WebKitJavascriptResult* result,
                          gpointer self);
    static gboolean onDecidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision,
                                   WebKitPolicyDecisionType type, gpointer self);
    static GtkWidget* onCreate(WebKitWebView* view, WebKitNavigationAction* action, gpointer self);
    static void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
    static gboolean onLoadFailed(WebKitWebView* view, WebKitLoadEvent event, gchar* uri,
                                 GError* error, gpointer self);
    static void onProcessTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                                    gpointer self);

    void receive(const std::string& name, WebKitJavascriptResult* result);
    bool allowNavigation(const std::string& uri, const char* what);

    WebView kind_;
    std::filesystem::path pages_;
    LogSink log_;
    Callbacks callbacks_;
    WebKitUserContentManager* content_;
    WebKitWebView* view_;
    std::optional<std::filesystem::path> loaded_;
    bool missingLogged_ = false;
    std::size_t droppedMessages_ = 0;
};

}  // namespace velmora
