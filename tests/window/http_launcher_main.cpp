// The launcher as a build configured with an http patch host would be: the
// same start-up with that one value changed.
#include "app/launcher_startup_win.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  LauncherConfig config = CompiledLauncherConfig();
  config.patchHost = L"http://patch.vardeni.invalid/";
  return RunWindowsLauncher(instance, config);
}
