#pragma once
// Sets (or removes) one environment variable for a test's duration and puts
// the previous state back afterwards.

#include <optional>
#include <string>
#include <utility>

namespace testing_support {

// One variable's value, std::nullopt when it is not set; each system reads and
// writes it with its own calls (scoped_environment_posix.cpp, _win.cpp).
std::optional<std::wstring> ReadEnvironment(const std::wstring& name);
void WriteEnvironment(const std::wstring& name, const std::optional<std::wstring>& value);

class ScopedEnvironment {
 public:
  // std::nullopt removes the variable.
  ScopedEnvironment(std::wstring name, const std::optional<std::wstring>& value)
      : name_(std::move(name)), previous_(ReadEnvironment(name_)) {
    WriteEnvironment(name_, value);
  }
  ~ScopedEnvironment() { WriteEnvironment(name_, previous_); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::wstring name_;
  std::optional<std::wstring> previous_;
};

}  // namespace testing_support
