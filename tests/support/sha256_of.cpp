#include "tests/support/sha256_of.h"

#include <cstdint>

#include "crypto/sha256.h"

namespace testing_support {

std::wstring Sha256Of(const std::string& bytes) {
  std::wstring digest;
  std::wstring error;
  crypto::HashMemorySha256(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), digest, error);
  return digest;
}

}  // namespace testing_support
