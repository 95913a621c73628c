// vardeni-launcher.exe's entry point: a Windows GUI program without console.
#include "app/launcher_startup_win.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  return RunWindowsLauncher(instance, CompiledLauncherConfig());
}
