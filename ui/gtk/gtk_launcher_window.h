#pragma once
// The launcher's window on Linux: a borderless GTK 3 window whose whole
// surface is the page in WebKitGTK, served from the private scheme by the
// shared asset routes. It carries out what the controller asks of a window
// (CAppWindow) and hands it the window's events.

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <string>

#include "app/app_controller.h"
#include "app/app_window.h"

// A modal error dialog titled with the display name; `owner` may be null.
void ShowErrorDialog(GtkWindow* owner, const std::wstring& text);

class CGtkLauncherWindow final : public CAppWindow {
 public:
  explicit CGtkLauncherWindow(CApp& app) : app_(app) {}
  ~CGtkLauncherWindow();

  // Creates and shows the window and initialises the controller in it.
  bool Create(std::wstring& errorText);
  // Brings the window in front of the others (a second launcher asked).
  void Raise();

  void PostAppMessage(EAppMessage message) override;
  void PostClose() override;
  void StartTimer(std::uint32_t periodMs) override;
  void StopTimer() override;
  void Minimize() override;
  void BeginMoveOrResize(EWindowGrip grip) override;
  void ShowErrorBox(const std::wstring& text) override;
  bool OpenUrl(const std::wstring& url) override;
  void OpenFolder(const std::wstring& folder) override;
  void RevealFile(const std::wstring& file) override;
  bool CreatePage(const std::wstring& userDataFolder, SPageCallbacks callbacks, std::wstring& errorText) override;
  void PostToPage(const std::string& utf8Text) override;
  void ClosePage() override;

 private:
  // The last press on the page: the system's move and resize loops start from a real one.
  struct SPress {
    guint button = 1;
    gint x = 0;
    gint y = 0;
    guint32 time = GDK_CURRENT_TIME;
  };

  void PlaceOnPointerMonitor();
  void ConnectWindowSignals();
  void ConnectPageSignals();

  static void OnDestroy(GtkWidget*, gpointer self);
  static gboolean OnWindowState(GtkWidget*, GdkEventWindowState* event, gpointer self);
  static void OnSizeAllocate(GtkWidget*, GdkRectangle* allocation, gpointer self);
  static gboolean OnButtonPress(GtkWidget*, GdkEventButton* event, gpointer self);
  static void OnScriptMessage(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer self);
  static void OnLoadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self);
  static gboolean OnLoadFailed(WebKitWebView*, WebKitLoadEvent, gchar* uri, GError* error, gpointer self);
  static gboolean OnDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 gpointer self);
  static void OnWebProcessTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason, gpointer self);
  static gboolean OnTimer(gpointer self);

  CApp& app_;
  GtkWidget* window_ = nullptr;
  WebKitWebView* view_ = nullptr;
  SPageCallbacks page_;
  SPress lastPress_;
  guint timer_ = 0;
  int width_ = 0;
  int height_ = 0;
  // Set once the window is going away: nothing queued reaches the controller after it.
  bool closing_ = false;
};
