#pragma once
// Sets (or removes) one environment variable for a test's duration and puts
// the previous state back afterwards.

#include <optional>
#include <string>

namespace testing_support {

class ScopedEnvironment {
 public:
  // std::nullopt removes the variable.
  ScopedEnvironment(std::wstring name, const std::optional<std::wstring>& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::wstring name_;
  std::optional<std::wstring> previous_;
};

}  // namespace testing_support
