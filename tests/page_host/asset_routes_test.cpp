#include "ui/asset_routes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>

#include "platform/embedded_resource.h"
#include "platform/path_text.h"
#include "tests/support/temp_dir.h"
#include "ui/media_registry.h"

namespace {

using testing_support::TempDir;

constexpr std::wstring_view kPngHeaders = L"Content-Type: image/png\r\nCache-Control: no-store\r\n";
constexpr std::wstring_view kJpegHeaders = L"Content-Type: image/jpeg\r\nCache-Control: no-store\r\n";

std::wstring OnPageHost(std::wstring_view path) { return std::wstring(webview::PageOrigin()) + std::wstring(path); }

// A 404 when `headers` is empty, else 200 with those headers, that resource id and that body.
void ExpectAnswer(const webview::SAssetResponse& response, std::wstring_view headers, int resourceId,
                  std::span<const std::uint8_t> body, const std::wstring& label) {
  const bool found = !headers.empty();
  EXPECT_EQ(response.statusCode, found ? 200 : 404) << label;
  EXPECT_EQ(response.reasonPhrase, found ? L"OK" : L"Not Found") << label;
  EXPECT_EQ(response.headers, found ? headers : L"Content-Length: 0\r\n") << label;
  EXPECT_EQ(response.resourceId, resourceId) << label;
  EXPECT_TRUE(std::ranges::equal(response.body, found ? body : std::span<const std::uint8_t>())) << label;
}

TEST(AssetRoutes, EmbeddedRoutesAnswerWithTheirResourceAndHeaders) {
  struct SCase {
    std::wstring uri;
    int resourceId;  // 0: not found
    std::wstring_view headers;
  };
  const std::wstring_view page =
      L"Content-Type: text/html; charset=utf-8\r\nCache-Control: no-store\r\nContent-Security-Policy: default-src "
      L"'self' 'unsafe-inline' data:; connect-src 'none'; frame-src 'none'; object-src 'none'\r\n";
  // The two shells serve the same host on different schemes; neither answers the other's.
  const std::wstring otherShell = webview::PageOrigin().starts_with(L"https:") ? L"vardeni://launcher.vardeni.invalid/"
                                                                                : L"https://launcher.vardeni.invalid/";
  const SCase cases[] = {
      {OnPageHost(L""), 200, page},
      {OnPageHost(L"?x=1"), 200, page},
      {OnPageHost(L"Cairo.ttf"), 103, L"Content-Type: font/ttf\r\nCache-Control: no-store\r\n"},
      {OnPageHost(L"images/scene.jpg?v=2"), 201, kJpegHeaders},
      {OnPageHost(L"images/logo.png"), 202, kPngHeaders},
      {OnPageHost(L"icons/1_active.png"), 1002, kPngHeaders},
      {OnPageHost(L"icons/39_incoming.png"), 1079, kPngHeaders},
      {OnPageHost(L"index.html"), 0, {}},
      {OnPageHost(L"cairo.ttf"), 0, {}},
      {OnPageHost(L"icons/4_active.png"), 0, {}},
      {OnPageHost(L"icons/01_active.png"), 0, {}},
      {OnPageHost(L"icons/100_active.png"), 0, {}},
      {OnPageHost(L"icons/1_idle.png"), 0, {}},
      {L"https://example.org/", 0, {}},
      {L"https://launcher.vardeni.invalid.example.org/", 0, {}},
      {otherShell + L"Cairo.ttf", 0, {}},
      {L"", 0, {}},
  };
  for (const SCase& c : cases) {
    ExpectAnswer(webview::ResolveAssetRequest(c.uri), c.headers, c.resourceId, platform::LoadEmbeddedResource(c.resourceId), c.uri);
  }
}

// Each resource must be the real file: a build that embedded a wrong or empty file would still route.
TEST(AssetRoutes, TheProgramCarriesThePageFontAndEveryPicture) {
  const auto startsWith = [](int id, std::string_view magic) {
    const std::span<const std::uint8_t> bytes = platform::LoadEmbeddedResource(id);
    return bytes.size() > magic.size() && std::equal(magic.begin(), magic.end(), bytes.begin(), [](char m, std::uint8_t b) {
             return static_cast<std::uint8_t>(m) == b;
           });
  };
  EXPECT_TRUE(startsWith(200, "<!doctype html>"));
  EXPECT_LT(platform::LoadEmbeddedResource(200).size(), 150u * 1024);
  EXPECT_TRUE(startsWith(103, std::string_view("\0\1\0\0", 4)));
  EXPECT_TRUE(startsWith(201, "\xFF\xD8\xFF"));
  EXPECT_TRUE(startsWith(202, "\x89PNG"));
  // Every icon the routes know is a PNG, and the program carries no badge they cannot reach.
  for (int id = 0; id < 40; ++id) {
    for (const bool incoming : {false, true}) {
      const std::wstring path = L"icons/" + std::to_wstring(id) + (incoming ? L"_incoming.png" : L"_active.png");
      const bool routed = webview::ResolveAssetRequest(OnPageHost(path)).statusCode == 200;
      EXPECT_EQ(startsWith(1000 + 2 * id + incoming, "\x89PNG"), routed) << id;
    }
  }
}

TEST(AssetRoutes, TheCoverIsServedFromItsRegisteredFileWithinItsSizeLimit) {
  struct SCase {
    std::string fileName;
    std::size_t size;
    std::wstring_view headers;  // empty: not found
  };
  constexpr std::size_t kLimit = 8 * 1024 * 1024;
  const SCase cases[] = {
      {"cover.png", 1, kPngHeaders},
      {"cover.jpg", kLimit, kJpegHeaders},
      {"cover.JPEG", 100, kJpegHeaders},
      {"cover.webp", 100, L"Content-Type: image/webp\r\nCache-Control: no-store\r\n"},
      {"cover.jpg", kLimit + 1, {}},
      {"cover.png", 0, {}},
      {"cover.bmp", 100, {}},
  };
  TempDir dir;
  for (const SCase& c : cases) {
    const std::string bytes(c.size, 'x');
    webview::RegisterMedia(webview::kCoverMediaPath, platform::FromPath(dir.Write(c.fileName, bytes)));
    ExpectAnswer(webview::ResolveAssetRequest(OnPageHost(L"media/cover?v=1")), c.headers, 0,
                 {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, platform::FromPath(c.fileName));
  }
  webview::RegisterMedia(webview::kCoverMediaPath, dir.wide() + L"/missing.png");
  ExpectAnswer(webview::ResolveAssetRequest(OnPageHost(L"media/cover")), {}, 0, {}, L"missing");
  ExpectAnswer(webview::ResolveAssetRequest(OnPageHost(L"media/other.png")), {}, 0, {}, L"unregistered");
}

}  // namespace
