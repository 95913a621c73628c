#include "tools/publisher/patch_host.h"

#include <system_error>

#include "app/launcher_config.h"
#include "crypto/hex.h"
#include "net/http_client.h"
#include "net/http_status.h"
#include "platform/path_text.h"
#include "platform/random_id.h"
#include "platform/tick_count.h"
#include "tools/publisher/host_files.h"

namespace publisher {
namespace {

constexpr std::size_t kSmallFileLimit = 16 * 1024 * 1024;

// As ReadWholeFile says it of a local file.
std::wstring LargerThan(std::uint64_t limit) { return L"is larger than " + std::to_wstring(limit) + L" bytes"; }

class CFolderHost final : public CPatchHost {
 public:
  explicit CFolderHost(std::filesystem::path folder) : folder_(std::move(folder)) {}

  std::wstring Where(const std::wstring& name) const override { return platform::FromPath(File(name)); }

  bool Read(const std::wstring& name, std::string& bytes, std::wstring& error) const override {
    return ReadWholeFile(File(name), kSmallFileLimit, bytes, error);
  }

  // Measured where it lies, so nothing needs a cap.
  bool Fetch(const std::wstring& name, std::uint64_t, std::filesystem::path& local, bool& missing,
             std::wstring& error) const override {
    local = File(name);
    std::error_code ec;
    missing = !std::filesystem::is_regular_file(local, ec);
    if (missing) error = Where(name) + L": missing";
    return !missing;
  }

  void Release(const std::filesystem::path&) const override {}

 private:
  std::filesystem::path File(const std::wstring& name) const { return folder_ / platform::ToPath(name); }

  std::filesystem::path folder_;
};

class CHttpsHost final : public CPatchHost {
 public:
  CHttpsHost(std::wstring base, std::filesystem::path scratch)
      : base_(std::move(base)), scratch_(std::move(scratch)), http_(config_) {
    if (!base_.ends_with(L'/')) base_ += L'/';
  }
  ~CHttpsHost() override {
    std::error_code ec;
    std::filesystem::remove_all(scratch_, ec);
  }

  std::wstring Where(const std::wstring& name) const override { return base_ + name; }

  // The pointer is the one mutable file: like a launcher, ask past any cache.
  bool Read(const std::wstring& name, std::string& bytes, std::wstring& error) const override {
    std::wstring url = Where(name);
    if (name.starts_with(L"pointer")) url += L"?v=" + std::to_wstring(platform::TickCountMs());
    net::SHttpGetResult result = http_.Get(url, kSmallFileLimit);
    if (result.tooLarge) result.error = LargerThan(kSmallFileLimit);
    if (!result.ok) {
      error = Where(name) + L": " + result.error;
      return false;
    }
    bytes.assign(result.body.begin(), result.body.end());
    return true;
  }

  bool Fetch(const std::wstring& name, std::uint64_t maxBytes, std::filesystem::path& local, bool& missing,
             std::wstring& error) const override {
    local = scratch_ / "blob";
    const std::filesystem::path partial = scratch_ / "blob.part";
    std::error_code ec;
    std::filesystem::remove(local, ec);
    std::filesystem::remove(partial, ec);
    net::SDownloadResult result;
    try {
      result = http_.DownloadFile(Where(name), local, partial, maxBytes, nullptr);
    } catch (const std::exception&) {
      result.error = L"the download could not be stored in " + platform::FromPath(scratch_);
    }
    if (result.tooLarge) result.error = LargerThan(maxBytes);
    missing = result.status == net::kStatusNotFound || result.status == net::kStatusGone;
    if (!result.ok) error = Where(name) + L": " + (missing ? std::wstring(L"missing") : result.error);
    return result.ok;
  }

  void Release(const std::filesystem::path& local) const override {
    std::error_code ec;
    std::filesystem::remove(local, ec);
  }

 private:
  LauncherConfig config_;
  std::wstring base_;
  std::filesystem::path scratch_;
  net::CHttpClient http_;
};

}  // namespace

bool OpenPatchHost(const std::wstring& location, std::unique_ptr<CPatchHost>& host, std::wstring& error) {
  if (location.starts_with(L"http://")) {
    error = L"a patch host is only read over https";
    return false;
  }
  if (!location.starts_with(L"https://")) {
    std::error_code ec;
    if (!std::filesystem::is_directory(platform::ToPath(location), ec)) {
      error = location + L": not a folder or an https address";
      return false;
    }
    host = std::make_unique<CFolderHost>(platform::ToPath(location));
    return true;
  }
  platform::RandomId id{};
  platform::GenerateRandomId(id);
  std::error_code ec;
  const std::filesystem::path scratch = std::filesystem::temp_directory_path(ec) /
                                        platform::ToPath(L"vardeni-verify-" + crypto::ToLowerHex(id.data(), 8));
  std::filesystem::create_directories(scratch, ec);
  if (ec) {
    error = platform::FromPath(scratch) + L": could not create a download folder";
    return false;
  }
  host = std::make_unique<CHttpsHost>(location, scratch);
  return true;
}

}  // namespace publisher
