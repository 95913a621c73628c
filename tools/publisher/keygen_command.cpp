// keygen and public-key: making a signing key and showing its public half.

#include "platform/path_text.h"
#include "text/utf.h"
#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"

namespace publisher {
namespace {

constexpr SOptionSpec kKeygenOptions[] = {{L"secret"}, {L"force", false}};
constexpr std::wstring_view kKeygenHelp =
    L"Usage: vardeni-publish keygen --secret <file> [--force]\n"
    L"\n"
    L"Makes a new Ed25519 signing key. The secret key goes to <file>, readable\n"
    L"only by you, and is never printed; an existing file is kept unless --force.\n"
    L"The public key is printed as Base64 and as the 64 hexadecimal digits that\n"
    L"configure a branded launcher build (LAUNCHER_PUBLIC_KEY_1 or _2).";

constexpr SOptionSpec kPublicKeyOptions[] = {{L"key"}};
constexpr std::wstring_view kPublicKeyHelp =
    L"Usage: vardeni-publish public-key --key <secret file>\n"
    L"\n"
    L"Prints the public half of a secret key file made by keygen.";

void PrintPublicKey(const PublicKey& key) {
  PrintLine(L"public key (Base64): " + text::Utf8ToWide(EncodeBase64(key.data(), key.size())));
  PrintLine(L"public key (hex):    " + PublicKeyHex(key));
}

}  // namespace

int RunKeygen(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"keygen", arguments, kKeygenOptions, kKeygenHelp, options)) return *stop;
  std::wstring error;
  if (!RequireOptions(options, {L"secret"}, error)) return UsageError(L"keygen", error);

  CSigningKey key;
  key.Generate();
  if (!key.Save(platform::ToPath(options.Value(L"secret")), options.Has(L"force"), error)) return Failure(error);
  PrintLine(L"secret key written to " + options.Value(L"secret") + L" (keep it private)");
  PrintPublicKey(key.Public());
  PrintLine(L"configure a branded build with -DLAUNCHER_PUBLIC_KEY_1=" + PublicKeyHex(key.Public()));
  return kExitSuccess;
}

int RunPublicKey(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"public-key", arguments, kPublicKeyOptions, kPublicKeyHelp, options)) {
    return *stop;
  }
  std::wstring error;
  if (!RequireOptions(options, {L"key"}, error)) return UsageError(L"public-key", error);
  CSigningKey key;
  if (!key.Load(platform::ToPath(options.Value(L"key")), error)) return Failure(error);
  PrintPublicKey(key.Public());
  return kExitSuccess;
}

}  // namespace publisher
