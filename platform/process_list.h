#pragma once
// Whether a program of a given file name is running, whoever started it and
// from wherever.

#include <string_view>

namespace platform {

enum class EProcessSearch { NotFound, Found, Unavailable };

// Walks the running processes (a Toolhelp snapshot / "/proc") and compares
// each one's executable file name with `fileName` in full, ignoring the case
// of ASCII letters. On Linux a process matches by "/proc/<pid>/comm" or by
// the base name of "/proc/<pid>/exe", so a Windows program run through Wine
// is found by its own name; one that has ended but is not yet reaped is not
// running. Unavailable when the list of processes cannot be read at all.
EProcessSearch FindProcessByFileName(std::wstring_view fileName);

}  // namespace platform
