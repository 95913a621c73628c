#include "tools/client/client_options.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

#include "app/paths.h"
#include "crypto/ed25519.h"
#include "platform/path_text.h"

namespace client {
namespace {

constexpr std::size_t kMaxKeys = 2;
constexpr std::wstring_view kRuntimeFolderName = L".runtime";
constexpr std::wstring_view kHighestVersion = L"999999999.999999999.999999999.999999999";

struct SCommandName {
  std::wstring_view name;
  EClientCommand command;
};
constexpr std::array<SCommandName, 5> kCommands{{
    {L"sync", EClientCommand::Sync},
    {L"patch", EClientCommand::Patch},
    {L"repair", EClientCommand::Repair},
    {L"orphans", EClientCommand::Orphans},
    {L"remove-orphans", EClientCommand::RemoveOrphans},
}};

std::optional<EClientCommand> CommandNamed(std::wstring_view name) {
  for (const SCommandName& entry : kCommands) {
    if (entry.name == name) return entry.command;
  }
  return std::nullopt;
}

// Fills `target` once; a second value is a mistake worth reporting.
bool TakeSingleValue(std::wstring_view option, const std::wstring& value, std::wstring& target,
                     std::wstring& error) {
  if (!target.empty()) {
    error = std::wstring(option) + L" was given twice.";
    return false;
  }
  if (value.empty()) {
    error = std::wstring(option) + L" needs a non-empty value.";
    return false;
  }
  target = value;
  return true;
}

bool TakeOption(std::wstring_view option, const std::wstring& value, SClientOptions& options, std::wstring& error) {
  if (option == L"--host") {
    if (!TakeSingleValue(option, value, options.host, error)) return false;
    if (!IsHttpsPatchHost(options.host)) {
      error = L"--host must be an https:// URL.";
      return false;
    }
    return true;
  }
  if (option == L"--key-hex") {
    if (options.keys.size() == kMaxKeys) {
      error = L"--key-hex may be given at most twice.";
      return false;
    }
    PublicKey key{};
    if (!crypto::ParsePublicKeyHex(value, key)) {
      error = L"--key-hex must be 64 hexadecimal digits.";
      return false;
    }
    if (!crypto::IsUsablePublicKey(key)) {
      error = L"--key-hex is not a usable Ed25519 public key.";
      return false;
    }
    options.keys.push_back(key);
    return true;
  }
  if (option == L"--game") return TakeSingleValue(option, value, options.gameFolder, error);
  if (option == L"--runtime") return TakeSingleValue(option, value, options.runtimeFolder, error);
  if (option == L"--channel") {
    if (!TakeSingleValue(option, value, options.channel, error)) return false;
    if (options.channel != L"stable" && options.channel != L"beta") {
      error = L"--channel must be stable or beta.";
      return false;
    }
    return true;
  }
  error = L"Unknown option " + std::wstring(option) + L".";
  return false;
}

bool TakesValue(std::wstring_view option) {
  return option == L"--host" || option == L"--key-hex" || option == L"--game" || option == L"--runtime" ||
         option == L"--channel";
}

bool CheckComplete(const SClientOptions& options, bool sawCommand, std::wstring& error) {
  if (!sawCommand) {
    error = L"No command given.";
  } else if (options.host.empty()) {
    error = L"--host is required.";
  } else if (options.keys.empty()) {
    error = L"--key-hex is required.";
  } else if (options.gameFolder.empty()) {
    error = L"--game is required.";
  } else {
    return true;
  }
  return false;
}

// The integrity cache keys files by full path, so relative folders are
// anchored once here.
std::filesystem::path AbsoluteFolder(const std::wstring& folder) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(platform::ToPath(folder), error);
  if (error) return platform::ToPath(folder);
  const std::filesystem::path normal = absolute.lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

}  // namespace

EParseOutcome ParseClientArguments(const std::vector<std::wstring>& arguments, SClientOptions& options,
                                   std::wstring& error) {
  options = SClientOptions{};
  error.clear();
  if (std::any_of(arguments.begin(), arguments.end(),
                  [](const std::wstring& a) { return a == L"--help" || a == L"-h"; })) {
    return EParseOutcome::Help;
  }
  bool sawCommand = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::wstring& argument = arguments[i];
    if (argument == L"--json") {
      options.json = true;
      continue;
    }
    if (argument.starts_with(L"-")) {
      const std::size_t equals = argument.find(L'=');
      const std::wstring option = argument.substr(0, equals);
      if (!TakesValue(option)) {
        error = L"Unknown option " + option + L".";
        return EParseOutcome::UsageError;
      }
      std::wstring value;
      if (equals != std::wstring::npos) {
        value = argument.substr(equals + 1);
      } else if (i + 1 < arguments.size()) {
        value = arguments[++i];
      } else {
        error = option + L" needs a value.";
        return EParseOutcome::UsageError;
      }
      if (!TakeOption(option, value, options, error)) return EParseOutcome::UsageError;
      continue;
    }
    const std::optional<EClientCommand> command = CommandNamed(argument);
    if (!command) {
      error = L"Unknown command " + argument + L".";
      return EParseOutcome::UsageError;
    }
    if (sawCommand) {
      error = L"Give one command only.";
      return EParseOutcome::UsageError;
    }
    options.command = *command;
    sawCommand = true;
  }
  return CheckComplete(options, sawCommand, error) ? EParseOutcome::Run : EParseOutcome::UsageError;
}

std::string ClientHelpText() {
  return R"(Usage: vardeni-client <command> --host <https URL> --key-hex <64 hex digits>
                      [--key-hex <64 hex digits>] --game <folder> [--runtime <folder>]
                      [--channel stable|beta] [--json]
       vardeni-client --help

Keeps a game folder identical to the signed update list on a patch host, with
the launcher's own patch engine and without a window.

Commands:
  sync            check the host and the folder; downloads no game file (a folder
                  that already holds the release is recorded as installed)
  patch           download and apply every file that differs from the release
  repair          fetch every file of the release again, trusting nothing on disk
  orphans         list the files the release does not name (protected files such
                  as settings, logs and screenshots are never listed)
  remove-orphans  delete those files

Options:
  --host URL        base address of the patch host; must begin with https://
  --key-hex HEX     Ed25519 public key of update lists, 64 hexadecimal digits;
                    give it once or twice (tried in that order)
  --game FOLDER     the game folder
  --runtime FOLDER  where launcher.state, integrity.cache, staging and launcher.log
                    are kept (default: .runtime inside the game folder)
  --channel NAME    stable or beta (default: the channel recorded in the runtime
                    folder, stable on a first run); the choice is recorded
  --json            one JSON object per line on standard output instead of text
  -h, --help        show this text

Output: a progress bar with speed and time left when standard output is a
terminal, one line per stage otherwise. Errors go to standard error.

Exit status:
  0  done: up to date (sync), every file applied (patch, repair), orphans listed
     (orphans) or all removed (remove-orphans)
  1  failed: host unreachable, update list refused, files that could not be
     updated or removed; the reason is printed
  2  the command line is wrong
  3  sync only: a patch is available

The patch host's certificate is checked against the system's trust store; on
Linux, OpenSSL's SSL_CERT_FILE selects another CA bundle.
)";
}

LauncherConfig ClientLauncherConfig(const SClientOptions& options) {
  LauncherConfig config = CompiledLauncherConfig();
  config.patchHost = options.host;
  config.publicKeys = {};
  std::copy(options.keys.begin(), options.keys.end(), config.publicKeys.begin());
  // The client never starts the game: it is a tool for operators and scripts.
  config.startGameAfterPatch = false;
  // Nor may a published launcher take the client's place: no version is newer than this one.
  config.launcherVersion = std::wstring(kHighestVersion);
  return config;
}

patch::SServiceFolders ClientServiceFolders(const SClientOptions& options) {
  const std::filesystem::path game = AbsoluteFolder(options.gameFolder);
  const std::filesystem::path runtime = options.runtimeFolder.empty()
                                            ? game / platform::ToPath(kRuntimeFolderName)
                                            : AbsoluteFolder(options.runtimeFolder);
  return {platform::FromPath(runtime), L"", platform::FromPath(game), ModulePath()};
}

}  // namespace client
