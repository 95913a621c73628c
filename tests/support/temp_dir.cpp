#include "tests/support/temp_dir.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <random>
#include <sstream>

#include "platform/path_text.h"

namespace testing_support {

TempDir::TempDir() {
  static std::atomic<unsigned> counter{0};
  std::random_device rd;
  std::ostringstream name;
  name << "vl-test-" << rd() << "-" << counter++;
  path_ = std::filesystem::temp_directory_path() / name.str();
  std::filesystem::create_directories(path_);
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

std::wstring TempDir::wide() const { return platform::FromPath(path_); }

std::filesystem::path TempDir::Write(std::string_view relative, std::string_view bytes) const {
  const auto file = path_ / std::filesystem::path(std::u8string(relative.begin(), relative.end()));
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file;
}

std::string ReadFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

}  // namespace testing_support
