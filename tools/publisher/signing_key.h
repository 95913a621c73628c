#pragma once
// The operator's Ed25519 keys, made and used with libsodium. A secret key
// file holds one line: the Base64 of libsodium's 64-byte secret key (the seed
// followed by the public key), so the public half can always be recovered.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "app/launcher_config.h"

namespace publisher {

// Must succeed before any other function here is used.
bool InitializeSodium();

class CSigningKey {
 public:
  CSigningKey() = default;
  ~CSigningKey();  // wipes the secret
  CSigningKey(const CSigningKey&) = delete;
  CSigningKey& operator=(const CSigningKey&) = delete;

  void Generate();
  // False with a sentence when the file is missing, unreadable or not a key
  // this tool wrote (including one whose two halves disagree).
  bool Load(const std::filesystem::path& file, std::wstring& error);
  // Writes the key with owner-only access. An existing file is refused unless
  // `replace`; it is then swapped for the new one in a single rename.
  bool Save(const std::filesystem::path& file, bool replace, std::wstring& error) const;

  const PublicKey& Public() const { return public_; }
  // The Base64 line of a detached signature over exactly message[0..length).
  std::string SignatureLine(const std::uint8_t* message, std::size_t length) const;

 private:
  std::array<std::uint8_t, 64> secret_{};
  PublicKey public_{};
};

// Standard Base64 with "=" padding, as the signature file uses it.
std::string EncodeBase64(const std::uint8_t* bytes, std::size_t count);
// 64 lower-case hexadecimal digits: the form a branded build is configured with.
std::wstring PublicKeyHex(const PublicKey& key);
// Accepts 64 hexadecimal digits of either case naming a usable key (a valid
// curve point of large order, as a branded build requires).
bool ParsePublicKeyHex(std::wstring_view hex, PublicKey& key, std::wstring& error);

}  // namespace publisher
