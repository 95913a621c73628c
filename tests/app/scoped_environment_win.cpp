#include "tests/app/scoped_environment.h"

#include <windows.h>

#include <utility>

namespace testing_support {
namespace {

std::optional<std::wstring> Read(const std::wstring& name) {
  const DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
  if (size == 0) return std::nullopt;
  std::wstring value(size, L'\0');
  value.resize(GetEnvironmentVariableW(name.c_str(), value.data(), size));
  return value;
}

void Write(const std::wstring& name, const std::optional<std::wstring>& value) {
  SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr);
}

}  // namespace

ScopedEnvironment::ScopedEnvironment(std::wstring name, const std::optional<std::wstring>& value)
    : name_(std::move(name)), previous_(Read(name_)) {
  Write(name_, value);
}

ScopedEnvironment::~ScopedEnvironment() { Write(name_, previous_); }

}  // namespace testing_support
