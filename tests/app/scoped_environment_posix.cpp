#include "tests/app/scoped_environment.h"

#include <cstdlib>
#include <utility>

#include "text/utf.h"

namespace testing_support {
namespace {

std::optional<std::wstring> Read(const std::wstring& name) {
  const char* value = std::getenv(text::WideToUtf8(name).c_str());
  if (value == nullptr) return std::nullopt;
  return text::Utf8ToWide(value);
}

void Write(const std::wstring& name, const std::optional<std::wstring>& value) {
  const std::string key = text::WideToUtf8(name);
  if (value) {
    ::setenv(key.c_str(), text::WideToUtf8(*value).c_str(), 1);
  } else {
    ::unsetenv(key.c_str());
  }
}

}  // namespace

ScopedEnvironment::ScopedEnvironment(std::wstring name, const std::optional<std::wstring>& value)
    : name_(std::move(name)), previous_(Read(name_)) {
  Write(name_, value);
}

ScopedEnvironment::~ScopedEnvironment() { Write(name_, previous_); }

}  // namespace testing_support
