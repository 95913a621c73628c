// Build-time guard for branded builds, run on the build machine at configure
// time (cmake/LauncherConfig.cmake). A configured public key must be an empty
// slot (64 zeros) or a valid Ed25519 point of large order: a small-order key
// would let anyone forge update list signatures.
//
// Usage: check_public_key NAME=HEX...
// Exit status 0 when every key passes, 1 with one line per refused key.

#include <sodium.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kKeyBytes = crypto_core_ed25519_BYTES;

bool DecodeKey(std::string_view hex, std::array<unsigned char, kKeyBytes>& key) {
  std::size_t written = 0;
  return hex.size() == 2 * kKeyBytes &&
         sodium_hex2bin(key.data(), key.size(), hex.data(), hex.size(), nullptr, &written, nullptr) == 0 &&
         written == key.size();
}

// Returns the complaint about one NAME=HEX argument, or an empty text.
std::string Complaint(std::string_view argument) {
  const std::size_t equals = argument.find('=');
  const std::string name(argument.substr(0, equals));
  const std::string hex(equals == std::string_view::npos ? std::string_view() : argument.substr(equals + 1));
  std::array<unsigned char, kKeyBytes> key{};
  if (!DecodeKey(hex, key)) return name + " must be 64 hexadecimal digits, got '" + hex + "'.";
  if (std::all_of(key.begin(), key.end(), [](unsigned char b) { return b == 0; })) return {};
  if (crypto_core_ed25519_is_valid_point(key.data()) != 1) {
    return name + " = " + hex +
           " is not a usable Ed25519 public key (not a valid curve point of large order). "
           "Configure the publisher's real public key, or 64 zeros for an empty slot.";
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  if (sodium_init() < 0) {
    std::fputs("check_public_key: libsodium could not be initialised.\n", stderr);
    return 1;
  }
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string complaint = Complaint(argv[i]);
    if (!complaint.empty()) {
      std::fprintf(stderr, "%s\n", complaint.c_str());
      status = 1;
    }
  }
  return status;
}
