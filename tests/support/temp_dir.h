#pragma once
#include <filesystem>
#include <string>
#include <string_view>

namespace testing_support {

// A fresh folder under the system temporary folder, removed with everything in it on destruction.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::wstring wide() const;
  // Writes bytes to a file below the folder, creating parent folders.
  std::filesystem::path Write(std::string_view relative, std::string_view bytes) const;

 private:
  std::filesystem::path path_;
};

std::string ReadFileBytes(const std::filesystem::path& path);

}  // namespace testing_support
