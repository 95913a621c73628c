#include "app/page_resources.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "patch/relative_path.h"
#include "platform/path_text.h"
#include "text/ascii_case.h"
#include "text/locale_file.h"
#include "text/utf.h"
#include "ui/media_registry.h"

namespace {

namespace fs = std::filesystem;

constexpr std::wstring_view kUiDocumentName = L"ui.json";
constexpr std::wstring_view kHttpsPrefix = L"https://";
// The media route serves only these, by extension.
constexpr std::array<std::wstring_view, 5> kCoverExtensions{L".png", L".jpg", L".jpeg", L".webp", L".gif"};
// A flag picture takes a few KiB.
constexpr std::uint64_t kMaxFlagBytes = 1024 * 1024;

// Downloads `url`, of at most `maxBytes`, to the cache folder joined with
// `relative`. A path that could leave the folder is refused; a stale partial
// file is dropped first, because it may be the start of another file.
bool DownloadIntoCache(const net::CHttpClient& http, const std::wstring& url, std::uint64_t maxBytes,
                       const std::wstring& cacheFolder, const std::wstring& relative, fs::path& target) {
  std::wstring normalised;
  if (!patch::ValidateRelativePath(relative, normalised) || normalised.find(L"..") != std::wstring::npos) {
    return false;
  }
  target = platform::ToPath(cacheFolder) / platform::ToPath(normalised);
  fs::path partial = target;
  partial += L".part";
  std::error_code ignored;
  fs::create_directories(target.parent_path(), ignored);
  fs::remove(partial, ignored);
  try {
    return http.DownloadFile(url, target, partial, maxBytes, {}).ok;
  } catch (const std::exception&) {
    return false;  // the folder or the file could not be made: keep what was there
  }
}

// The cover's extension in lower case when the page can be served it, else empty.
std::wstring CoverExtension(const std::wstring& address) {
  const std::wstring path = address.substr(0, address.find_first_of(L"?#"));
  const std::size_t dot = path.find_last_of(L"./");
  if (dot == std::wstring::npos || path[dot] != L'.') return {};
  const std::wstring_view extension = std::wstring_view(path).substr(dot);
  for (const std::wstring_view known : kCoverExtensions) {
    if (text::EqualsIgnoringAsciiCase(extension, known)) return std::wstring(known);
  }
  return {};
}

}  // namespace

void RefreshPageFiles(const net::CHttpClient& http, const patch::CPatcherService& service,
                      text::EPatcherLanguage language, const std::wstring& cacheFolder) {
  const std::wstring code(text::LanguageCode(language));
  const std::pair<std::wstring, std::uint64_t> files[] = {{L"ui/locale/en.json", text::kMaxLocaleFileBytes},
                                                          {L"ui/locale/" + code + L".json", text::kMaxLocaleFileBytes},
                                                          {L"ui/flags/" + code + L".tga", kMaxFlagBytes}};
  fs::path ignored;
  for (const auto& [relative, maxBytes] : files) {
    DownloadIntoCache(http, service.BuildPatchUrl(relative, false), maxBytes, cacheFolder, relative, ignored);
  }
}

bool FetchUiDocument(const net::CHttpClient& http, const patch::CPatcherService& service,
                     text::SLauncherUiDocument& document) {
  const net::SHttpGetResult fetched =
      http.Get(service.BuildPatchUrl(std::wstring(kUiDocumentName), false), text::kMaxUiDocumentBytes);
  if (!fetched.ok) return false;
  const std::string_view body(reinterpret_cast<const char*>(fetched.body.data()), fetched.body.size());
  text::SLauncherUiDocument read;
  std::wstring ignoredError;
  if (!text::ReadLauncherUiDocument(text::Utf8ToWide(body), read, ignoredError)) return false;
  document = std::move(read);
  return true;
}

std::wstring DownloadCover(const net::CHttpClient& http, const patch::CPatcherService& service,
                           const std::wstring& coverAddress, const std::wstring& cacheFolder) {
  const std::wstring extension = CoverExtension(coverAddress);
  if (extension.empty()) return {};
  std::wstring url;
  if (text::EqualsIgnoringAsciiCase(std::wstring_view(coverAddress).substr(0, kHttpsPrefix.size()), kHttpsPrefix)) {
    url = coverAddress;
  } else if (coverAddress.find(L"://") == std::wstring::npos && coverAddress.find(L"..") == std::wstring::npos) {
    url = service.BuildPatchUrl(coverAddress, false);  // a path on the patch host
  } else {
    return {};
  }
  fs::path target;
  // A larger picture could not be served to the page.
  if (!DownloadIntoCache(http, url, webview::kMaxMediaBytes, cacheFolder, L"media/cover" + extension, target)) {
    return {};
  }
  return platform::FromPath(target);
}
