#pragma once
// The Linux launcher's process: GTK, then the shared start-up with the GTK
// window, dialogs and single-instance lock.

int RunGtkLauncher(int argc, char** argv);
