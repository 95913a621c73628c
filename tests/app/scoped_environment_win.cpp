#include <windows.h>

#include "tests/app/scoped_environment.h"

namespace testing_support {

std::optional<std::wstring> ReadEnvironment(const std::wstring& name) {
  const DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
  if (size == 0) return std::nullopt;
  std::wstring value(size, L'\0');
  value.resize(GetEnvironmentVariableW(name.c_str(), value.data(), size));
  return value;
}

void WriteEnvironment(const std::wstring& name, const std::optional<std::wstring>& value) {
  SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr);
}

}  // namespace testing_support
