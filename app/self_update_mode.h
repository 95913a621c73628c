#pragma once
// The short-lived second half of the launcher's self-update: a newly
// downloaded launcher started with "--apply-self-update" and the old
// launcher's path copies itself over that path, starts it and exits.

#include <string>
#include <string_view>
#include <vector>

#include "patch/staged_promotion.h"

// True for a command line of at least three arguments whose second is the
// switch in any letter case; `target` is then the third (possibly empty).
// Arguments after it are ignored. `arguments` includes the program itself.
bool ParseSelfUpdateCommandLine(const std::vector<std::wstring>& arguments, std::wstring& target);

// Replaces `target` with the running executable (ModulePath()) and starts
// it. Returns the process exit code, 0 on success and 1 on failure, with
// `errorText` holding the sentence the caller shows in its error message box.
int RunSelfUpdateMode(const std::wstring& target, std::wstring& errorText);

// The same with the source and the wait for a locked target given.
int ApplySelfUpdate(const std::wstring& source, const std::wstring& target, const patch::SUnlockWait& wait,
                    std::wstring& errorText);
