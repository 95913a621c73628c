#pragma once
// What every subcommand shares: option handling with --help, the two kinds
// of failure and their exit statuses, and loading secret keys.

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/publisher/command_line.h"
#include "tools/publisher/signing_key.h"

namespace publisher {

inline constexpr std::wstring_view kToolName = L"vardeni-publish";

// Parses the command's options. Returns the exit status to stop with: 0 after
// printing `help` when asked for it, 2 after a usage error; nothing when the
// command should run.
std::optional<int> ParseCommandOptions(std::wstring_view command, const std::vector<std::wstring>& arguments,
                                       std::span<const SOptionSpec> specs, std::wstring_view help,
                                       CParsedOptions& options);

// Prints "vardeni-publish <command>: <message>" and a hint; returns 2.
int UsageError(std::wstring_view command, std::wstring_view message);
// Prints "error: <message>"; returns 1.
int Failure(std::wstring_view message);

using SigningKeys = std::vector<std::unique_ptr<CSigningKey>>;
// Loads every file; false with the first problem. The same key twice is
// refused: it would only add a useless signature line.
bool LoadSigningKeys(const std::vector<std::wstring>& files, SigningKeys& keys, std::wstring& error);

}  // namespace publisher
