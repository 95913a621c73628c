#include "ui/gtk/gtk_launcher_main.h"

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <csignal>

#include <cstdio>
#include <string>
#include <vector>

#include "app/app_controller.h"
#include "app/launcher_config.h"
#include "app/launcher_startup.h"
#include "app/paths.h"
#include "log/log.h"
#include "text/utf.h"
#include "ui/gtk/gtk_launcher_window.h"
#include "ui/gtk/single_instance.h"

namespace {

constexpr wchar_t kBroughtForward[] = L"brought forward by another launcher of this installation";
constexpr char kNoDisplay[] = "vardeni-launcher: there is no display to show the launcher on.\n";

}  // namespace

int RunGtkLauncher(int argc, char** argv) {
  std::vector<std::wstring> arguments;
  for (int i = 0; i < argc; ++i) arguments.push_back(text::Utf8ToWide(argv[i]));
  if (!gtk_init_check(&argc, &argv)) {
    std::fputs(kNoDisplay, stderr);
    return 1;
  }
  CSingleInstance instance;
  SLauncherShell shell;
  shell.showError = [](const std::wstring& text) { ShowErrorDialog(nullptr, text); };
  shell.takeSingleInstance = [&](const std::wstring&) { return instance.Take(RuntimeDirectory()); };
  shell.runWindow = [&](int& exitCode, std::wstring& errorText) {
    CApp app(DefaultAppSettings());
    CGtkLauncherWindow window(app);
    if (!window.Create(errorText)) return false;
    // Ending the session or the process closes the window as its close button would.
    for (const int signal : {SIGTERM, SIGINT}) {
      g_unix_signal_add(signal, +[](gpointer self) -> gboolean {
        static_cast<CGtkLauncherWindow*>(self)->PostClose();
        return G_SOURCE_CONTINUE;
      }, &window);
    }
    instance.ListenForRaise([&] {
      logging::LogInfo(L"start", kBroughtForward);
      window.Raise();
    });
    gtk_main();
    exitCode = 0;
    return true;
  };
  return RunLauncher(arguments, CompiledLauncherConfig(), shell);
}
