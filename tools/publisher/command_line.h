#pragma once
// The options of one subcommand: "--name value", "--name=value" and bare
// flags, plus positional arguments where a command takes them.

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace publisher {

struct SOptionSpec {
  std::wstring_view name;  // without the leading "--"
  bool takesValue = true;
  bool repeatable = false;
};

class CParsedOptions {
 public:
  bool Has(std::wstring_view name) const { return values_.find(name) != values_.end(); }
  // The option's first value; empty when it is absent or a flag.
  const std::wstring& Value(std::wstring_view name) const;
  // Every value in command-line order; empty when absent.
  const std::vector<std::wstring>& Values(std::wstring_view name) const;
  const std::vector<std::wstring>& Positional() const { return positional_; }
  bool WantsHelp() const { return help_; }

 private:
  friend bool ParseOptions(const std::vector<std::wstring>& arguments, std::span<const SOptionSpec> specs,
                           CParsedOptions& options, std::wstring& error);

  std::map<std::wstring, std::vector<std::wstring>, std::less<>> values_;
  std::vector<std::wstring> positional_;
  bool help_ = false;
};

// "--help" or "-h" anywhere sets WantsHelp and nothing else is judged. False
// with a one-line error for an unknown option, a missing value, a value given
// to a flag or a second use of an option that may appear once.
bool ParseOptions(const std::vector<std::wstring>& arguments, std::span<const SOptionSpec> specs,
                  CParsedOptions& options, std::wstring& error);

// False with "missing --name" for the first absent option of `names`.
bool RequireOptions(const CParsedOptions& options, std::initializer_list<std::wstring_view> names,
                    std::wstring& error);

}  // namespace publisher
