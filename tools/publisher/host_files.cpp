#include "tools/publisher/host_files.h"

#include <fstream>
#include <iterator>
#include <system_error>

#include "crypto/hex.h"
#include "platform/file_replace.h"
#include "platform/path_text.h"
#include "platform/random_id.h"

namespace publisher {

std::filesystem::path TemporarySibling(const std::filesystem::path& target) {
  platform::RandomId id{};
  platform::GenerateRandomId(id);  // all zeros on failure still names a usable file
  std::filesystem::path sibling = target;
  sibling += platform::ToPath(L"." + crypto::ToLowerHex(id.data(), 8) + L".tmp");
  return sibling;
}

bool ReplaceFileAtomically(const std::filesystem::path& target, std::string_view bytes, std::wstring& error) {
  const std::filesystem::path temporary = TemporarySibling(target);
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
      std::error_code ignored;
      std::filesystem::remove(temporary, ignored);
      error = PathProblem(temporary, L"could not be written");
      return false;
    }
  }
  std::uint32_t code = 0;
  if (!platform::MoveReplacingFile(temporary, target, code)) {
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    error = PathProblem(target, L"could not be replaced (error " + std::to_wstring(code) + L")");
    return false;
  }
  return true;
}

bool ReadWholeFile(const std::filesystem::path& path, std::size_t limit, std::string& bytes, std::wstring& error) {
  bytes.clear();
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = PathProblem(path, L"could not be opened");
    return false;
  }
  std::error_code ec;
  const std::uintmax_t size = std::filesystem::file_size(path, ec);
  if (!ec && size > limit) {
    error = PathProblem(path, L"is larger than " + std::to_wstring(limit) + L" bytes");
    return false;
  }
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad() || bytes.size() > limit) {
    error = PathProblem(path, L"could not be read");
    bytes.clear();
    return false;
  }
  return true;
}

std::wstring PathProblem(const std::filesystem::path& path, std::wstring_view reason) {
  return platform::FromPath(path) + L": " + std::wstring(reason);
}

}  // namespace publisher
