#include "app/launcher_config.h"

bool IsHttpsPatchHost(const std::wstring& patchHost) { return patchHost.starts_with(L"https://"); }
