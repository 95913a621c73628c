#include <cstdlib>

#include "tests/app/scoped_environment.h"
#include "text/utf.h"

namespace testing_support {

std::optional<std::wstring> ReadEnvironment(const std::wstring& name) {
  const char* value = std::getenv(text::WideToUtf8(name).c_str());
  if (value == nullptr) return std::nullopt;
  return text::Utf8ToWide(value);
}

void WriteEnvironment(const std::wstring& name, const std::optional<std::wstring>& value) {
  const std::string key = text::WideToUtf8(name);
  if (value) {
    ::setenv(key.c_str(), text::WideToUtf8(*value).c_str(), 1);
  } else {
    ::unsetenv(key.c_str());
  }
}

}  // namespace testing_support
