#include "tools/publisher/signing_key.h"

#include <sodium.h>

#include <cstring>
#include <vector>

#include "crypto/base64.h"
#include "crypto/ed25519.h"
#include "crypto/hex.h"
#include "platform/file_replace.h"
#include "platform/move_no_replace.h"
#include "platform/path_text.h"
#include "text/utf.h"
#include "tools/publisher/host_files.h"
#include "tools/publisher/private_file.h"

namespace publisher {
namespace {

constexpr std::size_t kKeyFileLimit = 1024;

std::string_view TrimLine(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

bool InitializeSodium() { return sodium_init() >= 0; }

CSigningKey::~CSigningKey() { sodium_memzero(secret_.data(), secret_.size()); }

void CSigningKey::Generate() { crypto_sign_keypair(public_.data(), secret_.data()); }

bool CSigningKey::Load(const std::filesystem::path& file, std::wstring& error) {
  std::string text;
  if (!ReadWholeFile(file, kKeyFileLimit, text, error)) return false;
  std::vector<std::uint8_t> bytes;
  const bool decoded = crypto::DecodeBase64(TrimLine(text), bytes) && bytes.size() == secret_.size();
  sodium_memzero(text.data(), text.size());
  if (!decoded) {
    sodium_memzero(bytes.data(), bytes.size());
    error = PathProblem(file, L"is not a secret key file written by keygen");
    return false;
  }
  // Re-derive the pair from the seed: a damaged file must not sign with a
  // public half that no launcher is configured with.
  std::array<std::uint8_t, 64> derived{};
  crypto_sign_seed_keypair(public_.data(), derived.data(), bytes.data());
  const bool consistent = sodium_memcmp(derived.data(), bytes.data(), derived.size()) == 0;
  std::memcpy(secret_.data(), derived.data(), secret_.size());
  sodium_memzero(derived.data(), derived.size());
  sodium_memzero(bytes.data(), bytes.size());
  if (!consistent) {
    error = PathProblem(file, L"is damaged: its public half does not belong to its secret half");
    return false;
  }
  return true;
}

bool CSigningKey::Save(const std::filesystem::path& file, bool replace, std::wstring& error) const {
  std::error_code ec;
  if (!replace && std::filesystem::exists(file, ec)) {
    error = PathProblem(file, L"already exists; use --force to replace it");
    return false;
  }
  std::string text = EncodeBase64(secret_.data(), secret_.size()) + "\n";
  const std::filesystem::path temporary = TemporarySibling(file);
  const bool created = CreatePrivateFile(temporary, text, error);
  sodium_memzero(text.data(), text.size());
  if (!created) return false;
  std::uint32_t code = 0;
  const bool moved = replace ? platform::MoveReplacingFile(temporary, file, code)
                             : platform::MoveWithoutReplacing(temporary, file, code);
  if (!moved) {
    std::filesystem::remove(temporary, ec);
    error = PathProblem(file, L"could not be written (error " + std::to_wstring(code) + L")");
    return false;
  }
  return true;
}

std::string CSigningKey::SignatureLine(const std::uint8_t* message, std::size_t length) const {
  std::array<std::uint8_t, crypto_sign_BYTES> signature{};
  crypto_sign_detached(signature.data(), nullptr, message, length, secret_.data());
  return EncodeBase64(signature.data(), signature.size());
}

std::string EncodeBase64(const std::uint8_t* bytes, std::size_t count) {
  std::string text(sodium_base64_ENCODED_LEN(count, sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes, count, sodium_base64_VARIANT_ORIGINAL);
  text.resize(std::strlen(text.c_str()));
  return text;
}

std::wstring PublicKeyHex(const PublicKey& key) { return crypto::ToLowerHex(key.data(), key.size()); }

bool ParsePublicKeyHex(std::wstring_view hex, PublicKey& key, std::wstring& error) {
  if (!crypto::ParsePublicKeyHex(hex, key)) {
    error = L"a public key must be 64 hexadecimal digits, got \"" + std::wstring(hex) + L"\"";
    return false;
  }
  if (!crypto::IsUsablePublicKey(key)) {
    error = L"public key " + std::wstring(hex) + L" is not a usable Ed25519 key";
    return false;
  }
  return true;
}

}  // namespace publisher
