#include "ui/gtk/gtk_launcher_main.h"

int main(int argc, char** argv) { return RunGtkLauncher(argc, argv); }
