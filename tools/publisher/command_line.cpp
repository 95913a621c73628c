#include "tools/publisher/command_line.h"

#include <algorithm>

namespace publisher {
namespace {

const std::vector<std::wstring> kNoValues;
const std::wstring kNoValue;

bool IsHelp(std::wstring_view argument) { return argument == L"--help" || argument == L"-h"; }

}  // namespace

const std::wstring& CParsedOptions::Value(std::wstring_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() || found->second.empty() ? kNoValue : found->second.front();
}

const std::vector<std::wstring>& CParsedOptions::Values(std::wstring_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? kNoValues : found->second;
}

bool ParseOptions(const std::vector<std::wstring>& arguments, std::span<const SOptionSpec> specs,
                  CParsedOptions& options, std::wstring& error) {
  options = CParsedOptions{};
  error.clear();
  if (std::any_of(arguments.begin(), arguments.end(), IsHelp)) {
    options.help_ = true;
    return true;
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::wstring_view argument = arguments[i];
    if (!argument.starts_with(L"--")) {
      options.positional_.emplace_back(argument);
      continue;
    }
    const std::size_t equals = argument.find(L'=');
    const std::wstring_view name = argument.substr(2, equals == std::wstring_view::npos ? argument.npos : equals - 2);
    const auto spec = std::find_if(specs.begin(), specs.end(), [&](const SOptionSpec& s) { return s.name == name; });
    if (spec == specs.end()) {
      error = L"unknown option " + std::wstring(argument.substr(0, equals));
      return false;
    }
    std::vector<std::wstring>& values = options.values_[std::wstring(name)];
    if (!values.empty() && !spec->repeatable) {
      error = L"--" + std::wstring(name) + L" may be given only once";
      return false;
    }
    if (!spec->takesValue) {
      if (equals != std::wstring_view::npos) {
        error = L"--" + std::wstring(name) + L" takes no value";
        return false;
      }
      continue;
    }
    if (equals != std::wstring_view::npos) {
      values.emplace_back(argument.substr(equals + 1));
    } else if (i + 1 < arguments.size()) {
      values.push_back(arguments[++i]);
    } else {
      error = L"--" + std::wstring(name) + L" needs a value";
      return false;
    }
  }
  return true;
}

bool RequireOptions(const CParsedOptions& options, std::initializer_list<std::wstring_view> names,
                    std::wstring& error) {
  for (std::wstring_view name : names) {
    if (!options.Has(name)) {
      error = L"missing --" + std::wstring(name);
      return false;
    }
  }
  return true;
}

}  // namespace publisher
