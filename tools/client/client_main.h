#pragma once
// The client's process entry, shared by both systems: the OS entry points
// only turn their argument vector into wide texts.

#include <string>
#include <vector>

namespace client {

// `arguments` excludes the program name. Returns the exit code.
int RunClient(const std::vector<std::wstring>& arguments);

}  // namespace client
