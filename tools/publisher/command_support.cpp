#include "tools/publisher/command_support.h"

#include "platform/path_text.h"
#include "tools/publisher/console.h"

namespace publisher {

std::optional<int> ParseCommandOptions(std::wstring_view command, const std::vector<std::wstring>& arguments,
                                       std::span<const SOptionSpec> specs, std::wstring_view help,
                                       CParsedOptions& options) {
  std::wstring error;
  if (!ParseOptions(arguments, specs, options, error)) return UsageError(command, error);
  if (options.WantsHelp()) {
    PrintLine(help);
    return kExitSuccess;
  }
  return std::nullopt;
}

int UsageError(std::wstring_view command, std::wstring_view message) {
  PrintError(std::wstring(kToolName) + L" " + std::wstring(command) + L": " + std::wstring(message));
  PrintError(L"Try '" + std::wstring(kToolName) + L" " + std::wstring(command) + L" --help'.");
  return kExitUsage;
}

int Failure(std::wstring_view message) {
  PrintError(L"error: " + std::wstring(message));
  return kExitFailure;
}

bool LoadSigningKeys(const std::vector<std::wstring>& files, SigningKeys& keys, std::wstring& error) {
  keys.clear();
  for (const std::wstring& file : files) {
    auto key = std::make_unique<CSigningKey>();
    if (!key->Load(platform::ToPath(file), error)) return false;
    for (const auto& loaded : keys) {
      if (loaded->Public() == key->Public()) {
        error = file + L": the same key was given twice";
        return false;
      }
    }
    keys.push_back(std::move(key));
  }
  return true;
}

}  // namespace publisher
