#include "crypto/manifest_signature.h"

#include <algorithm>
#include <vector>

#include "crypto/base64.h"
#include "crypto/ed25519.h"

namespace crypto {

namespace {

// Bounds the work an attacker can cause: 8 lines x 2 keys checks at most.
constexpr std::size_t kMaxSignatureLines = 8;
constexpr std::string_view kLineBlanks = " \t\r";

std::string_view TrimLine(std::string_view line) {
  const std::size_t first = line.find_first_not_of(kLineBlanks);
  if (first == std::string_view::npos) return {};
  const std::size_t last = line.find_last_not_of(kLineBlanks);
  return line.substr(first, last - first + 1);
}

// The trimmed non-empty lines in file order; false when there are too many,
// which refuses the whole file rather than just the extra line.
bool SplitSignatureLines(std::string_view text, std::vector<std::string_view>& lines) {
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    const std::string_view line = TrimLine(text.substr(start, end - start));
    if (!line.empty()) {
      if (lines.size() == kMaxSignatureLines) return false;
      lines.push_back(line);
    }
    start = end + 1;
  }
  return true;
}

template <typename Bytes>
bool IsAllZero(const Bytes& bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}

// A line is usable when it decodes to exactly one signature that is not all zero.
bool DecodeSignatureLine(std::string_view line, Ed25519Signature& signature) {
  std::vector<std::uint8_t> bytes;
  if (!DecodeBase64(line, bytes) || bytes.size() != signature.size()) return false;
  std::copy(bytes.begin(), bytes.end(), signature.begin());
  return !IsAllZero(signature);
}

}  // namespace

bool VerifyManifestSignature(const std::uint8_t* message, std::size_t length, std::string_view signatureText,
                             const std::array<PublicKey, 2>* keyTable) {
  if (keyTable == nullptr) return false;
  std::vector<std::string_view> lines;
  if (!SplitSignatureLines(signatureText, lines) || lines.empty()) return false;

  for (const std::string_view line : lines) {
    Ed25519Signature signature;
    if (!DecodeSignatureLine(line, signature)) continue;
    for (const PublicKey& key : *keyTable) {
      // An empty slot is all zero, a small-order point anyone could forge for.
      if (IsAllZero(key)) continue;
      if (VerifyEd25519Signature(signature, key, message, length)) return true;
    }
  }
  return false;
}

}  // namespace crypto
