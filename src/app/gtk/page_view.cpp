#include "app/gtk/page_view.hpp"

#include <nlohmann/json.hpp>

#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// Addresses can be long and hostile; the log keeps their start only.
std::string shortened(const std::string& uri) {
    constexpr std::size_t keep = 160;
    return uri.size() <= keep ? uri : uri.substr(0, keep) + "\u2026";
}

const char* viewName(WebView kind) {
    return kind == WebView::main ? "main" : "menu";
}

/// Can the web-process sandbox start here? It needs bubblewrap and user namespaces, which
/// some containers and hardened kernels refuse; WebKit would then fail every page.
std::optional<std::string> sandboxProblem() {
    gchar* bwrap = g_find_program_in_path("bwrap");
    if (bwrap == nullptr) return "bubblewrap (bwrap) is not installed";
    const gchar* argv[] = {bwrap,           "--ro-bind",         "/",         "/",
                           "--unshare-all", "--die-with-parent", "/bin/true", nullptr};
    gint status = 0;
    GError* error = nullptr;
    const bool ran = g_spawn_sync(
        nullptr, const_cast<gchar**>(argv), nullptr,
        static_cast<GSpawnFlags>(G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL), nullptr,
        nullptr, nullptr, nullptr, &status, &error);
    g_free(bwrap);
    if (!ran) {
        std::string why = error != nullptr ? error->message : "unknown error";
        g_clear_error(&error);
        return "bubblewrap could not run: " + why;
    }
    if (!g_spawn_check_wait_status(status, nullptr)) {
        return "bubblewrap cannot create namespaces here";
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> prepareWebContext(const std::filesystem::path& resources) {
    // The context outlives a run; WebKit refuses a second set-up once a web process exists.
    static std::optional<std::optional<std::string>> prepared;
    if (prepared) return *prepared;
    auto* context = webkit_web_context_get_default();
    // A few local pages that are never browsed: no page cache, and the smallest memory caches.
    webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    if (const auto problem = sandboxProblem()) {
        prepared = "ui: web sandbox not available (" + *problem + "); pages run without it";
        return *prepared;
    }
    prepared = std::optional<std::string>();
    webkit_web_context_set_sandbox_enabled(context, TRUE);
    std::error_code error;
    const auto pages = std::filesystem::weakly_canonical(resources, error);
    webkit_web_context_add_path_to_sandbox(context, (error ? resources : pages).c_str(), TRUE);
    return std::nullopt;
}

namespace {

struct HandlerTag {
    PageView* view;
    std::string name;
};

void configureSettings(WebKitWebView* view) {
    auto* settings = webkit_web_view_get_settings(view);
    // A page of ours reads its own scripts and styles and nothing else.
    webkit_settings_set_allow_file_access_from_file_urls(settings, FALSE);
    webkit_settings_set_allow_universal_access_from_file_urls(settings, FALSE);
    webkit_settings_set_javascript_can_open_windows_automatically(settings, FALSE);
    webkit_settings_set_enable_developer_extras(settings,
                                                g_getenv("VELMORA_WEB_INSPECTOR") != nullptr);
    webkit_settings_set_enable_webaudio(settings, FALSE);
    webkit_settings_set_enable_webgl(settings, FALSE);
    webkit_settings_set_enable_back_forward_navigation_gestures(settings, FALSE);
    webkit_settings_set_enable_smooth_scrolling(settings, FALSE);
    // Static pages that change a few texts a second gain nothing from GL compositing, which
    // costs a GL context, its buffers and, on machines without a GPU, software rendering of
    // every frame: about a third of the window's memory.
    webkit_settings_set_hardware_acceleration_policy(settings,
                                                     WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    webkit_settings_set_enable_page_cache(settings, FALSE);
}

}  // namespace

PageView::PageView(WebView kind, const std::vector<std::string>& handlers,
                   std::filesystem::path pages, LogSink log, Callbacks callbacks)
    : kind_(kind),
      pages_(std::move(pages)),
      log_(std::move(log)),
      callbacks_(std::move(callbacks)),
      content_(webkit_user_content_manager_new()) {
    std::error_code error;
    const auto canonical = std::filesystem::weakly_canonical(pages_, error);
    if (!error) pages_ = canonical;
    for (const auto& name : handlers) {
        auto* tag = new HandlerTag{this, name};
        const auto signal = "script-message-received::" + name;
        g_signal_connect_data(
            content_, signal.c_str(), G_CALLBACK(onMessage), tag,
            [](gpointer data, GClosure*) { delete static_cast<HandlerTag*>(data); },
            GConnectFlags{});
        webkit_user_content_manager_register_script_message_handler(content_, name.c_str());
    }
    view_ = WEBKIT_WEB_VIEW(webkit_web_view_new_with_user_content_manager(content_));
    g_object_ref_sink(view_);
    configureSettings(view_);
    g_signal_connect(view_, "decide-policy", G_CALLBACK(onDecidePolicy), this);
    g_signal_connect(view_, "create", G_CALLBACK(onCreate), this);
    g_signal_connect(view_, "load-changed", G_CALLBACK(onLoadChanged), this);
    g_signal_connect(view_, "load-failed", G_CALLBACK(onLoadFailed), this);
    g_signal_connect(view_, "web-process-terminated", G_CALLBACK(onProcessTerminated), this);
}

PageView::~PageView() {
    g_signal_handlers_disconnect_by_data(view_, this);
    // The handler tags are freed by their closures when the manager goes.
    g_object_unref(view_);
    g_object_unref(content_);
}

void PageView::load(const std::filesystem::path& file, const std::filesystem::path& readAccess) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        if (!missingLogged_) log_("ui: page file missing: " + file.string());
        missingLogged_ = true;
        return;
    }
    // Read access is the pages folder: the sandbox holds only that folder, and the origin
    // rule refuses navigation anywhere else.
    (void)readAccess;
    gchar* uri = g_filename_to_uri(file.c_str(), nullptr, nullptr);
    if (uri == nullptr) return;
    loaded_ = file;
    webkit_web_view_load_uri(view_, uri);
    g_free(uri);
}

void PageView::setDocumentStartScript(const std::string& source) {
    webkit_user_content_manager_remove_all_scripts(content_);
    auto* script =
        webkit_user_script_new(source.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
    webkit_user_content_manager_add_script(content_, script);
    webkit_user_script_unref(script);
}

void PageView::evaluate(const std::string& script) {
    webkit_web_view_evaluate_javascript(view_, script.c_str(), static_cast<gssize>(script.size()),
                                        nullptr, nullptr, nullptr, nullptr, nullptr);
}

std::optional<std::string> PageView::currentURI() const {
    const gchar* uri = webkit_web_view_get_uri(view_);
    if (uri == nullptr) return std::nullopt;
    return std::string(uri);
}

bool PageView::isBundledPage(const std::string& uri) const {
    // The pages add their stage to the address; the file is what counts.
    const auto end = uri.find_first_of("?#");
    const auto bare = uri.substr(0, end);
    gchar* name = g_filename_from_uri(bare.c_str(), nullptr, nullptr);
    if (name == nullptr) return false;
    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(std::filesystem::path(name), error);
    g_free(name);
    if (error) return false;
    return path.parent_path() == pages_ && path.extension() == ".html" &&
           std::filesystem::is_regular_file(path, error);
}

void PageView::onMessage(WebKitUserContentManager* /*manager*/, WebKitJavascriptResult* result,
                         gpointer data) {
    auto* tag = static_cast<HandlerTag*>(data);
    tag->view->receive(tag->name, result);
}

void PageView::receive(const std::string& name, WebKitJavascriptResult* result) {
    const auto uri = currentURI();
    if (!uri || !isBundledPage(*uri)) {
        log_("ui: rejected '" + name + "' message: the " + viewName(kind_) +
             " view does not show a bundled page");
        return;
    }
    JSCValue* value = webkit_javascript_result_get_js_value(result);
    gchar* json = jsc_value_to_json(value, 0);
    std::string text = json != nullptr ? json : "null";
    g_free(json);
    if (text.size() > maxMessageBytes) {
        // Counted rather than logged one by one: a flood must not fill the disk either.
        if (droppedMessages_++ % 1000 == 0) {
            log_("ui: dropped oversized '" + name + "' message (" + std::to_string(text.size()) +
                 " bytes)");
        }
        return;
    }
    auto body = nlohmann::json::parse(text, nullptr, false);
    if (body.is_discarded()) return;
    if (callbacks_.message) {
        callbacks_.message(PageMessage{kind_, name, std::move(body), true, uri});
    }
}

bool PageView::allowNavigation(const std::string& uri, const char* what) {
    if (isBundledPage(uri)) return true;
    log_(std::string("ui: refused ") + what + " to " + shortened(uri));
    return false;
}

gboolean PageView::onDecidePolicy(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
                                  WebKitPolicyDecisionType type, gpointer data) {
    auto* self = static_cast<PageView*>(data);
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
    auto* navigation = WEBKIT_NAVIGATION_POLICY_DECISION(decision);
    auto* action = webkit_navigation_policy_decision_get_navigation_action(navigation);
    auto* request = webkit_navigation_action_get_request(action);
    const gchar* target = webkit_uri_request_get_uri(request);
    const std::string uri = target != nullptr ? target : "";
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        self->log_("ui: refused a new window for " + shortened(uri));
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }
    if (!self->allowNavigation(uri, "navigation")) {
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }
    webkit_policy_decision_use(decision);
    return TRUE;
}

GtkWidget* PageView::onCreate(WebKitWebView* /*view*/, WebKitNavigationAction* /*action*/,
                              gpointer data) {
    static_cast<PageView*>(data)->log_("ui: refused a new window");
    return nullptr;
}

void PageView::onLoadChanged(WebKitWebView* /*view*/, WebKitLoadEvent event, gpointer data) {
    auto* self = static_cast<PageView*>(data);
    if (event == WEBKIT_LOAD_FINISHED && self->callbacks_.finished) self->callbacks_.finished();
}

gboolean PageView::onLoadFailed(WebKitWebView* /*view*/, WebKitLoadEvent /*event*/, gchar* uri,
                                GError* error, gpointer data) {
    // A refused navigation reports itself as a cancelled load; it is logged already.
    if (g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR,
                        WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE)) {
        return FALSE;
    }
    auto* self = static_cast<PageView*>(data);
    self->log_("ui: page load failed: " + shortened(uri != nullptr ? uri : "") + ": " +
               (error != nullptr ? error->message : "unknown error"));
    return FALSE;
}

void PageView::onProcessTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                                   gpointer data) {
    auto* self = static_cast<PageView*>(data);
    const char* why = reason == WEBKIT_WEB_PROCESS_CRASHED                 ? "crashed"
                      : reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? "ran out of memory"
                                                                           : "was ended";
    self->log_(std::string("ui: the ") + viewName(self->kind_) + " view's web process " + why +
               "; reloading the page");
    if (self->loaded_) {
        gchar* uri = g_filename_to_uri(self->loaded_->c_str(), nullptr, nullptr);
        if (uri != nullptr) webkit_web_view_load_uri(view, uri);
        g_free(uri);
    }
}

}  // namespace velmora
