#include "patch/blob_path.h"

namespace patch {
namespace {

constexpr std::size_t kSha256HexLength = 64;

bool IsLowerHexDigit(wchar_t unit) { return (unit >= L'0' && unit <= L'9') || (unit >= L'a' && unit <= L'f'); }

}  // namespace

bool IsSha256Hex(std::wstring_view text) {
  if (text.size() != kSha256HexLength) return false;
  for (wchar_t unit : text) {
    if (!IsLowerHexDigit(unit)) return false;
  }
  return true;
}

std::wstring BlobPathForHash(std::wstring_view sha256) {
  if (!IsSha256Hex(sha256)) return {};
  std::wstring path = L"blobs/";
  path.append(sha256.substr(0, 2));
  path += L'/';
  path.append(sha256);
  return path;
}

}  // namespace patch
