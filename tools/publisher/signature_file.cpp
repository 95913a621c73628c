#include "tools/publisher/signature_file.h"

#include <algorithm>

#include "crypto/base64.h"
#include "crypto/ed25519.h"

namespace publisher {

std::vector<std::string_view> SignatureLines(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) continue;
    lines.push_back(line.substr(first, line.find_last_not_of(kBlanks) - first + 1));
  }
  return lines;
}

bool IsSignedBy(std::string_view text, const PublicKey& key, const std::uint8_t* message, std::size_t length) {
  for (std::string_view line : SignatureLines(text)) {
    std::vector<std::uint8_t> bytes;
    crypto::Ed25519Signature signature{};
    if (!crypto::DecodeBase64(line, bytes) || bytes.size() != signature.size()) continue;
    std::copy(bytes.begin(), bytes.end(), signature.begin());
    if (crypto::VerifyEd25519Signature(signature, key, message, length)) return true;
  }
  return false;
}

}  // namespace publisher
