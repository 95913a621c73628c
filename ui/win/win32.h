#pragma once
// <windows.h> for the Windows shell. It defines PostAppMessage as a macro
// for posting to a thread, which would rename the window interface's method
// of that name (app/app_window.h) in every file that sees both.
#include <windows.h>

#undef PostAppMessage
