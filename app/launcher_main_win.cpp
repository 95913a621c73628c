// vardeni-launcher.exe's entry point: a Windows GUI program without console.
#include "app/launcher_startup.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  return RunLauncher(instance, CompiledLauncherConfig());
}
