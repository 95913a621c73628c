// sign: one more signature line on a published update list, made with
// another key (for example the second key a launcher is built with).

#include "platform/path_text.h"
#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"
#include "tools/publisher/host_files.h"
#include "tools/publisher/signature_file.h"

namespace publisher {
namespace {

constexpr SOptionSpec kSignOptions[] = {{L"list"}, {L"key"}};
constexpr std::wstring_view kSignHelp =
    L"Usage: vardeni-publish sign --list <patchlist.vN.json> --key <secret file>\n"
    L"\n"
    L"Adds a signature line made with the key to the list's signature file\n"
    L"(patchlist.vN.sig beside it, created when missing). A file that already\n"
    L"holds 8 signatures, or one by this key, is left unchanged.";

constexpr std::size_t kSignatureFileLimit = 64 * 1024;
constexpr std::size_t kListFileLimit = 16 * 1024 * 1024;

}  // namespace

int RunSign(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"sign", arguments, kSignOptions, kSignHelp, options)) return *stop;
  std::wstring error;
  if (!RequireOptions(options, {L"list", L"key"}, error)) return UsageError(L"sign", error);
  const std::wstring& listName = options.Value(L"list");
  if (!listName.ends_with(L".json")) return UsageError(L"sign", L"--list must name a .json update list");
  const std::filesystem::path listFile = platform::ToPath(listName);
  const std::filesystem::path signatureFile =
      platform::ToPath(listName.substr(0, listName.size() - 5) + L".sig");

  CSigningKey key;
  if (!key.Load(platform::ToPath(options.Value(L"key")), error)) return Failure(error);
  std::string list;
  if (!ReadWholeFile(listFile, kListFileLimit, list, error)) return Failure(error);
  std::string signatures;
  std::error_code ec;
  if (std::filesystem::exists(signatureFile, ec) &&
      !ReadWholeFile(signatureFile, kSignatureFileLimit, signatures, error)) {
    return Failure(error);
  }
  const auto* message = reinterpret_cast<const std::uint8_t*>(list.data());
  if (IsSignedBy(signatures, key.Public(), message, list.size())) {
    return Failure(PathProblem(signatureFile, L"already holds a signature by this key"));
  }
  const std::size_t lines = SignatureLines(signatures).size();
  if (lines >= kMaxSignatureLines) {
    return Failure(PathProblem(signatureFile, L"already holds " + std::to_wstring(lines) +
                                                  L" signatures; a launcher refuses a file with more than " +
                                                  std::to_wstring(kMaxSignatureLines)));
  }
  if (!signatures.empty() && signatures.back() != '\n') signatures += '\n';
  signatures += key.SignatureLine(message, list.size()) + "\n";
  if (!ReplaceFileAtomically(signatureFile, signatures, error)) return Failure(error);
  PrintLine(L"signed " + platform::FromPath(listFile.filename()) + L": " + std::to_wstring(lines + 1) +
            L" signature(s) in " + platform::FromPath(signatureFile.filename()));
  return kExitSuccess;
}

}  // namespace publisher
