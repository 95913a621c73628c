// CGtkLauncherWindow: the GTK window, the WebKitGTK view locked down to the
// page's private scheme, and the controller's window requests carried out
// on the GTK main loop.
#include "ui/gtk/gtk_launcher_window.h"

#include <array>
#include <cstdio>
#include <utility>

#include "app/launcher_config.h"
#include "platform/embedded_resource.h"
#include "text/utf.h"
#include "ui/asset_routes.h"
#include "ui/page_origin.h"

namespace {

// The crest: the window icon (the .ico resource exists only in the Windows build).
constexpr int kProgramIconId = 202;
constexpr char kMessageHandlerName[] = "launcher";
constexpr char kReceiveCall[] = "window.__launcherReceive(text);";
constexpr wchar_t kPageNotLoaded[] = L"The interface could not be loaded.";
// Shown until the page has loaded, so the window never flashes white.
constexpr char kWindowStyle[] = "window { background-color: #0b0f17; }";

struct SPostedMessage {
  CGtkLauncherWindow* window;
  EAppMessage message;
};

std::string Utf8(std::wstring_view text) { return text::WideToUtf8(text); }

std::string PageScheme() {
  const std::string origin = Utf8(webview::PageOrigin());
  return origin.substr(0, origin.find(':'));
}

// "Name: value\r\n" lines into the response's header table. WebKit takes the
// type from its own field, not from the headers, so it is set there too.
void SetHeaders(WebKitURISchemeResponse* response, std::wstring_view text) {
  SoupMessageHeaders* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
  while (!text.empty()) {
    const std::size_t end = text.find(L"\r\n");
    const std::wstring_view line = text.substr(0, end);
    if (const std::size_t colon = line.find(L": "); colon != std::wstring_view::npos) {
      const std::string name = Utf8(line.substr(0, colon));
      const std::string value = Utf8(line.substr(colon + 2));
      soup_message_headers_append(headers, name.c_str(), value.c_str());
      if (name == "Content-Type") webkit_uri_scheme_response_set_content_type(response, value.c_str());
    }
    text.remove_prefix(end == std::wstring_view::npos ? text.size() : end + 2);
  }
  webkit_uri_scheme_response_set_http_headers(response, headers);
}

void AnswerPageRequest(WebKitURISchemeRequest* request, gpointer) {
  webview::SAssetResponse answer =
      webview::ResolveAssetRequest(text::Utf8ToWide(webkit_uri_scheme_request_get_uri(request)));
  auto* body = new std::vector<std::uint8_t>(std::move(answer.body));
  GBytes* bytes = g_bytes_new_with_free_func(body->data(), body->size(),
                                             [](gpointer data) { delete static_cast<std::vector<std::uint8_t>*>(data); },
                                             body);
  GInputStream* stream = g_memory_input_stream_new_from_bytes(bytes);
  WebKitURISchemeResponse* response = webkit_uri_scheme_response_new(stream, g_bytes_get_size(bytes));
  webkit_uri_scheme_response_set_status(response, answer.statusCode, Utf8(answer.reasonPhrase).c_str());
  SetHeaders(response, answer.headers);
  webkit_uri_scheme_request_finish_with_response(request, response);
  g_object_unref(response);
  g_object_unref(stream);
  g_bytes_unref(bytes);
}

bool IsOnPageOrigin(const char* uri) { return uri != nullptr && std::string_view(uri).starts_with(Utf8(webview::PageOrigin())); }

std::wstring WithCode(std::wstring_view message, int code) {
  char hex[16];
  std::snprintf(hex, sizeof(hex), "0x%08X", static_cast<unsigned>(code));
  return std::wstring(message) + L" (" + text::Utf8ToWide(hex) + L")";
}

GdkWindowEdge EdgeOf(EWindowGrip grip) {
  switch (grip) {
    case EWindowGrip::Left:
      return GDK_WINDOW_EDGE_WEST;
    case EWindowGrip::Right:
      return GDK_WINDOW_EDGE_EAST;
    case EWindowGrip::Top:
      return GDK_WINDOW_EDGE_NORTH;
    case EWindowGrip::TopLeft:
      return GDK_WINDOW_EDGE_NORTH_WEST;
    case EWindowGrip::TopRight:
      return GDK_WINDOW_EDGE_NORTH_EAST;
    case EWindowGrip::BottomLeft:
      return GDK_WINDOW_EDGE_SOUTH_WEST;
    case EWindowGrip::BottomRight:
      return GDK_WINDOW_EDGE_SOUTH_EAST;
    default:
      return GDK_WINDOW_EDGE_SOUTH;
  }
}

void SetProgramIcon(GtkWindow* window) {
  const std::span<const std::uint8_t> icon = platform::LoadEmbeddedResource(kProgramIconId);
  GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
  if (!icon.empty() && gdk_pixbuf_loader_write(loader, icon.data(), icon.size(), nullptr) &&
      gdk_pixbuf_loader_close(loader, nullptr)) {
    gtk_window_set_icon(window, gdk_pixbuf_loader_get_pixbuf(loader));
  } else {
    gdk_pixbuf_loader_close(loader, nullptr);
  }
  g_object_unref(loader);
}

bool ShowUri(GtkWidget* window, const std::string& uri) {
  return gtk_show_uri_on_window(GTK_WINDOW(window), uri.c_str(), GDK_CURRENT_TIME, nullptr);
}

// Asks the desktop's file manager to select the file, through the common
// interface file managers offer; false when there is none to ask.
bool ShowInFileManager(const std::string& path) {
  if (g_getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr) return false;  // no session: nobody to ask
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
  GVariant* reply = nullptr;
  if (bus != nullptr && uri != nullptr) {
    const gchar* uris[] = {uri, nullptr};
    reply = g_dbus_connection_call_sync(bus, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                        "org.freedesktop.FileManager1", "ShowItems", g_variant_new("(^ass)", uris, ""),
                                        nullptr, G_DBUS_CALL_FLAGS_NONE, 2000, nullptr, nullptr);
  }
  const bool shown = reply != nullptr;
  if (reply != nullptr) g_variant_unref(reply);
  g_free(uri);
  if (bus != nullptr) g_object_unref(bus);
  return shown;
}

}  // namespace

CGtkLauncherWindow::~CGtkLauncherWindow() {
  if (window_ != nullptr) gtk_widget_destroy(window_);
}

bool CGtkLauncherWindow::Create(std::wstring& errorText) {
  const LauncherConfig& config = CompiledLauncherConfig();
  window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWindow* window = GTK_WINDOW(window_);
  gtk_window_set_title(window, Utf8(config.displayName).c_str());
  gtk_window_set_decorated(window, FALSE);
  gtk_window_set_default_size(window, config.windowWidth, config.windowHeight);
  GdkGeometry minimum{};
  minimum.min_width = config.minWindowWidth;
  minimum.min_height = config.minWindowHeight;
  gtk_window_set_geometry_hints(window, nullptr, &minimum, GDK_HINT_MIN_SIZE);
  GtkCssProvider* style = gtk_css_provider_new();
  gtk_css_provider_load_from_data(style, kWindowStyle, -1, nullptr);
  gtk_style_context_add_provider(gtk_widget_get_style_context(window_), GTK_STYLE_PROVIDER(style),
                                 GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(style);
  SetProgramIcon(window);
  PlaceOnPointerMonitor();
  ConnectWindowSignals();

  if (!app_.Initialize(*this, errorText)) {
    gtk_widget_destroy(window_);
    window_ = nullptr;
    return false;
  }
  gtk_widget_show(window_);
  return true;
}

void CGtkLauncherWindow::PlaceOnPointerMonitor() {
  GdkDisplay* display = gdk_display_get_default();
  gint x = 0;
  gint y = 0;
  gdk_device_get_position(gdk_seat_get_pointer(gdk_display_get_default_seat(display)), nullptr, &x, &y);
  GdkRectangle area{};
  gdk_monitor_get_workarea(gdk_display_get_monitor_at_point(display, x, y), &area);
  const LauncherConfig& config = CompiledLauncherConfig();
  gtk_window_move(GTK_WINDOW(window_), area.x + (area.width - config.windowWidth) / 2,
                  area.y + (area.height - config.windowHeight) / 2);
}

void CGtkLauncherWindow::ConnectWindowSignals() {
  g_signal_connect(window_, "destroy", G_CALLBACK(OnDestroy), this);
  g_signal_connect(window_, "window-state-event", G_CALLBACK(OnWindowState), this);
  g_signal_connect(window_, "size-allocate", G_CALLBACK(OnSizeAllocate), this);
}

void CGtkLauncherWindow::Raise() {
  if (window_ == nullptr) return;
  gtk_window_deiconify(GTK_WINDOW(window_));
  gtk_window_present_with_time(GTK_WINDOW(window_), GDK_CURRENT_TIME);
}

void CGtkLauncherWindow::PostAppMessage(EAppMessage message) {
  // Any thread: the GTK main loop runs it.
  g_idle_add(
      [](gpointer data) -> gboolean {
        const SPostedMessage posted = *static_cast<SPostedMessage*>(data);
        delete static_cast<SPostedMessage*>(data);
        if (!posted.window->closing_) posted.window->app_.OnAppMessage(posted.message);
        return G_SOURCE_REMOVE;
      },
      new SPostedMessage{this, message});
}

void CGtkLauncherWindow::PostClose() {
  g_idle_add(
      [](gpointer data) -> gboolean {
        auto* self = static_cast<CGtkLauncherWindow*>(data);
        if (!self->closing_ && self->window_ != nullptr) gtk_window_close(GTK_WINDOW(self->window_));
        return G_SOURCE_REMOVE;
      },
      this);
}

void CGtkLauncherWindow::StartTimer(std::uint32_t periodMs) {
  StopTimer();
  timer_ = g_timeout_add(periodMs, OnTimer, this);
}

void CGtkLauncherWindow::StopTimer() {
  if (timer_ != 0) g_source_remove(timer_);
  timer_ = 0;
}

gboolean CGtkLauncherWindow::OnTimer(gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  if (!window->closing_) window->app_.OnTimer();
  return G_SOURCE_CONTINUE;
}

void CGtkLauncherWindow::Minimize() { gtk_window_iconify(GTK_WINDOW(window_)); }

void CGtkLauncherWindow::BeginMoveOrResize(EWindowGrip grip) {
  GtkWindow* window = GTK_WINDOW(window_);
  if (grip == EWindowGrip::Caption) {
    gtk_window_begin_move_drag(window, lastPress_.button, lastPress_.x, lastPress_.y, lastPress_.time);
  } else {
    gtk_window_begin_resize_drag(window, EdgeOf(grip), lastPress_.button, lastPress_.x, lastPress_.y,
                                 lastPress_.time);
  }
}

void ShowErrorDialog(GtkWindow* owner, const std::wstring& text) {
  GtkWidget* dialog =
      gtk_message_dialog_new(owner, GTK_DIALOG_MODAL, GTK_MESSAGE_ERROR, GTK_BUTTONS_OK, "%s", Utf8(text).c_str());
  gtk_window_set_position(GTK_WINDOW(dialog), GTK_WIN_POS_CENTER);
  gtk_window_set_title(GTK_WINDOW(dialog), Utf8(CompiledLauncherConfig().displayName).c_str());
  gtk_dialog_run(GTK_DIALOG(dialog));
  gtk_widget_destroy(dialog);
}

void CGtkLauncherWindow::ShowErrorBox(const std::wstring& text) { ShowErrorDialog(GTK_WINDOW(window_), text); }

bool CGtkLauncherWindow::OpenUrl(const std::wstring& url) { return ShowUri(window_, Utf8(url)); }

void CGtkLauncherWindow::OpenFolder(const std::wstring& folder) {
  gchar* uri = g_filename_to_uri(Utf8(folder).c_str(), nullptr, nullptr);
  if (uri != nullptr) ShowUri(window_, uri);
  g_free(uri);
}

void CGtkLauncherWindow::RevealFile(const std::wstring& file) {
  const std::string path = Utf8(file);
  if (ShowInFileManager(path)) return;
  gchar* folder = g_path_get_dirname(path.c_str());
  OpenFolder(text::Utf8ToWide(folder));
  g_free(folder);
}

bool CGtkLauncherWindow::CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks,
                                    std::wstring& errorText) {
  const std::string profile = Utf8(userDataFolder);
  const std::string cache = profile + "/cache";
  WebKitWebsiteDataManager* data = webkit_website_data_manager_new("base-data-directory", profile.c_str(),
                                                                   "base-cache-directory", cache.c_str(), nullptr);
  WebKitWebContext* context = webkit_web_context_new_with_website_data_manager(data);
  g_object_unref(data);
  // Registered before the first load, and secure, so fonts load and the page is a secure context.
  const std::string scheme = PageScheme();
  webkit_web_context_register_uri_scheme(context, scheme.c_str(), AnswerPageRequest, nullptr, nullptr);
  WebKitSecurityManager* security = webkit_web_context_get_security_manager(context);
  webkit_security_manager_register_uri_scheme_as_secure(security, scheme.c_str());
  webkit_security_manager_register_uri_scheme_as_cors_enabled(security, scheme.c_str());

  WebKitUserContentManager* content = webkit_user_content_manager_new();
  webkit_user_content_manager_register_script_message_handler(content, kMessageHandlerName);
  g_signal_connect(content, (std::string("script-message-received::") + kMessageHandlerName).c_str(),
                   G_CALLBACK(OnScriptMessage), this);
  view_ = WEBKIT_WEB_VIEW(
      g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager", content, nullptr));
  g_object_unref(context);
  g_object_unref(content);

  WebKitSettings* settings = webkit_web_view_get_settings(view_);
  webkit_settings_set_enable_developer_extras(settings, FALSE);
  webkit_settings_set_enable_back_forward_navigation_gestures(settings, FALSE);
  webkit_settings_set_enable_smooth_scrolling(settings, TRUE);
  // A file dropped on the page would otherwise navigate to it.
  gtk_drag_dest_unset(GTK_WIDGET(view_));
  page_ = std::move(callbacks);
  ConnectPageSignals();
  gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(view_));
  webkit_web_view_load_uri(view_, Utf8(webview::PageOrigin()).c_str());
  errorText.clear();
  return true;
}

void CGtkLauncherWindow::ConnectPageSignals() {
  g_signal_connect(view_, "button-press-event", G_CALLBACK(OnButtonPress), this);
  g_signal_connect(view_, "load-changed", G_CALLBACK(OnLoadChanged), this);
  g_signal_connect(view_, "load-failed", G_CALLBACK(OnLoadFailed), this);
  g_signal_connect(view_, "decide-policy", G_CALLBACK(OnDecidePolicy), this);
  g_signal_connect(view_, "web-process-terminated", G_CALLBACK(OnWebProcessTerminated), this);
  // No context menu: the page is an interface, not a document.
  g_signal_connect(view_, "context-menu", G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu*, GdkEvent*,
                                                         WebKitHitTestResult*, gpointer) -> gboolean { return TRUE; }),
                   nullptr);
}

void CGtkLauncherWindow::PostToPage(const std::string& utf8Text) {
  if (view_ == nullptr) return;
  // Passed as an argument, never spliced into script text.
  GVariantDict arguments;
  g_variant_dict_init(&arguments, nullptr);
  g_variant_dict_insert(&arguments, "text", "s", utf8Text.c_str());
  webkit_web_view_call_async_javascript_function(view_, kReceiveCall, -1, g_variant_dict_end(&arguments), nullptr,
                                                 nullptr, nullptr, nullptr, nullptr);
}

void CGtkLauncherWindow::ClosePage() { page_ = {}; }

void CGtkLauncherWindow::OnDestroy(GtkWidget*, gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  window->closing_ = true;
  window->app_.Shutdown();
  window->window_ = nullptr;
  window->view_ = nullptr;
  gtk_main_quit();
}

gboolean CGtkLauncherWindow::OnWindowState(GtkWidget*, GdkEventWindowState* event, gpointer self) {
  if ((event->changed_mask & GDK_WINDOW_STATE_ICONIFIED) != 0) {
    static_cast<CGtkLauncherWindow*>(self)->app_.SetVisible((event->new_window_state & GDK_WINDOW_STATE_ICONIFIED) == 0);
  }
  return FALSE;
}

void CGtkLauncherWindow::OnSizeAllocate(GtkWidget* widget, GdkRectangle* allocation, gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  if (allocation->width == window->width_ && allocation->height == window->height_) return;
  window->width_ = allocation->width;
  window->height_ = allocation->height;
  // A shown or resized window checks the host again, as on Windows.
  if (gtk_widget_get_mapped(widget)) window->app_.SetVisible(true);
}

gboolean CGtkLauncherWindow::OnButtonPress(GtkWidget*, GdkEventButton* event, gpointer self) {
  static_cast<CGtkLauncherWindow*>(self)->lastPress_ = {event->button, static_cast<gint>(event->x_root),
                                                        static_cast<gint>(event->y_root), event->time};
  return FALSE;
}

void CGtkLauncherWindow::OnScriptMessage(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  JSCValue* value = webkit_javascript_result_get_js_value(result);
  // Only strings are commands; anything else is ignored, as WebView2 ignores non-string messages.
  if (window->closing_ || !window->page_.messageReceived || !jsc_value_is_string(value)) return;
  gchar* message = jsc_value_to_string(value);
  window->page_.messageReceived(message);
  g_free(message);
}

void CGtkLauncherWindow::OnLoadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  // A load that failed also finishes, with no page to show.
  if (event != WEBKIT_LOAD_FINISHED || window->closing_ || !IsOnPageOrigin(webkit_web_view_get_uri(window->view_))) {
    return;
  }
  gtk_widget_show(GTK_WIDGET(window->view_));
  if (window->page_.pageLoaded) window->page_.pageLoaded();
}

gboolean CGtkLauncherWindow::OnLoadFailed(WebKitWebView*, WebKitLoadEvent, gchar* uri, GError* error, gpointer self) {
  auto* window = static_cast<CGtkLauncherWindow*>(self);
  // Refused navigations elsewhere end here too; only the page itself failing is fatal.
  const bool cancelled = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
  if (cancelled || window->closing_ || !IsOnPageOrigin(uri) || !window->page_.fatalError) return FALSE;
  window->page_.fatalError(WithCode(kPageNotLoaded, error->code));
  return TRUE;
}

gboolean CGtkLauncherWindow::OnDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                            WebKitPolicyDecisionType type, gpointer) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
  // No new windows; navigation only within the page's own origin. Links leave through openExternal.
  const char* uri = nullptr;
  if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
    WebKitNavigationAction* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  }
  if (IsOnPageOrigin(uri)) {
    webkit_policy_decision_use(decision);
  } else {
    webkit_policy_decision_ignore(decision);
  }
  return TRUE;
}

void CGtkLauncherWindow::OnWebProcessTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason, gpointer) {
  // The page comes back with the whole state once it has loaded again.
  webkit_web_view_reload(view);
}
