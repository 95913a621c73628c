#include "ui/asset_routes.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "platform/embedded_resource.h"
#include "platform/path_text.h"
#include "ui/media_registry.h"

namespace webview {
namespace {

// The page may load only from its own host and may open no connection,
// frame or plug-in: everything it says to the launcher goes through the
// message channel.
constexpr std::wstring_view kPageHeaders =
    L"Content-Type: text/html; charset=utf-8\r\nCache-Control: no-store\r\n"
    L"Content-Security-Policy: default-src 'self' 'unsafe-inline' data:; connect-src 'none'; "
    L"frame-src 'none'; object-src 'none'\r\n";
constexpr std::wstring_view kFontHeaders = L"Content-Type: font/ttf\r\nCache-Control: no-store\r\n";
constexpr std::wstring_view kPngHeaders = L"Content-Type: image/png\r\nCache-Control: no-store\r\n";
constexpr std::wstring_view kJpegHeaders = L"Content-Type: image/jpeg\r\nCache-Control: no-store\r\n";
constexpr std::wstring_view kWebpHeaders = L"Content-Type: image/webp\r\nCache-Control: no-store\r\n";
constexpr std::wstring_view kGifHeaders = L"Content-Type: image/gif\r\nCache-Control: no-store\r\n";

struct SStaticRoute {
  std::wstring_view path;
  int resourceId;
  std::wstring_view headers;
};
constexpr SStaticRoute kStaticRoutes[] = {
    {L"/", 200, kPageHeaders},
    {L"/Cairo.ttf", 103, kFontHeaders},
    {L"/images/scene.jpg", 201, kJpegHeaders},
    {L"/images/logo.png", 202, kPngHeaders},
};

// The event badges the program carries (the page knows the same set).
constexpr std::array kIconIds = {1, 2, 3, 5, 7, 8, 9, 13, 14, 15, 20, 21, 22, 27, 28, 29, 30, 34, 36, 37, 38, 39};
constexpr std::wstring_view kIconPrefix = L"/icons/";
constexpr int kIconResourceBase = 1000;

struct SMediaType {
  std::wstring_view extension;
  std::wstring_view headers;
};
constexpr SMediaType kMediaTypes[] = {
    {L".png", kPngHeaders}, {L".jpg", kJpegHeaders}, {L".jpeg", kJpegHeaders},
    {L".webp", kWebpHeaders}, {L".gif", kGifHeaders},
};

// "/icons/<id>_active.png" is resource 1000 + 2 id, "_incoming.png" the one
// after it; 0 when the path is no known icon. The id is one or two digits
// with no leading zero, so "01" and "100" name nothing.
int IconResourceId(std::wstring_view path) {
  if (!path.starts_with(kIconPrefix)) return 0;
  path.remove_prefix(kIconPrefix.size());
  const std::size_t digits = std::min(path.find_first_not_of(L"0123456789"), path.size());
  if (digits == 0 || digits > 2 || path[0] == L'0') return 0;
  int id = 0;
  for (const wchar_t digit : path.substr(0, digits)) id = id * 10 + (digit - L'0');
  if (std::find(kIconIds.begin(), kIconIds.end(), id) == kIconIds.end()) return 0;
  const std::wstring_view state = path.substr(digits);
  if (state == L"_active.png") return kIconResourceBase + 2 * id;
  if (state == L"_incoming.png") return kIconResourceBase + 2 * id + 1;
  return 0;
}

SAssetResponse ResourceAnswer(int resourceId, std::wstring_view headers) {
  const std::span<const std::uint8_t> bytes = platform::LoadEmbeddedResource(resourceId);
  if (bytes.empty()) return {};
  return {200, L"OK", headers, resourceId, {bytes.begin(), bytes.end()}};
}

std::optional<std::wstring_view> MediaHeaders(const std::filesystem::path& file) {
  std::wstring extension = file.extension().wstring();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; });
  for (const SMediaType& type : kMediaTypes) {
    if (type.extension == extension) return type.headers;
  }
  return std::nullopt;
}

// A registered file of a known picture type and of 1 byte to 8 MiB.
SAssetResponse MediaAnswer(const std::wstring& filePath) {
  const std::filesystem::path file = platform::ToPath(filePath);
  const std::optional<std::wstring_view> headers = MediaHeaders(file);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (!headers || error || size == 0 || size > kMaxMediaBytes) return {};
  std::vector<std::uint8_t> body(static_cast<std::size_t>(size));
  std::ifstream in(file, std::ios::binary);
  in.read(reinterpret_cast<char*>(body.data()), static_cast<std::streamsize>(body.size()));
  if (in.gcount() != static_cast<std::streamsize>(body.size())) return {};
  return {200, L"OK", *headers, 0, std::move(body)};
}

}  // namespace

std::wstring_view PagePath(std::wstring_view uri, std::wstring_view origin) {
  if (origin.empty() || !uri.starts_with(origin)) return {};
  const std::wstring_view path = uri.substr(origin.size() - 1);  // keeps the origin's closing "/"
  return path.substr(0, path.find_first_of(L"?#"));
}

SAssetResponse ResolveAssetRequest(std::wstring_view uri, std::wstring_view origin) {
  const std::wstring_view path = PagePath(uri, origin);
  if (path.empty()) return {};
  for (const SStaticRoute& route : kStaticRoutes) {
    if (route.path == path) return ResourceAnswer(route.resourceId, route.headers);
  }
  if (const int icon = IconResourceId(path); icon != 0) return ResourceAnswer(icon, kPngHeaders);
  if (const std::optional<std::wstring> file = FindMedia(path)) return MediaAnswer(*file);
  return {};
}

}  // namespace webview
