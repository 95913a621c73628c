// Times ParseJson on an update-list-shaped document of 256 KiB, the largest
// JSON the launcher reads.
#include <chrono>
#include <cstdio>
#include <string>

#include "text/json.h"
#include "text/utf.h"

namespace {

constexpr std::size_t kDocumentBytes = 256 * 1024;
constexpr double kMinimumSeconds = 2.0;

std::string MakeUpdateList() {
  std::string out = "{\"schema\":1,\"version\":1042,\"channel\":\"live\",\"generatedAt\":\"2026-11-22T21:38:44Z\",\"files\":[";
  static constexpr char kHex[] = "0123456789abcdef";
  for (unsigned index = 0; out.size() < kDocumentBytes; ++index) {
    if (index > 0) out += ',';
    out += "{\"path\":\"data/zone_";
    out += std::to_string(index % 97);
    out += "/asset_";
    out += std::to_string(index);
    out += ".pak\",\"sha256\":\"";
    unsigned mix = index * 2654435761u + 12345u;
    for (int i = 0; i < 64; ++i) {
      mix = mix * 1103515245u + 12345u;
      out += kHex[(mix >> 16) & 0x0F];
    }
    out += "\",\"size\":";
    out += std::to_string(1000ull + index * 7919ull % 50'000'000ull);
    out += '}';
  }
  out += "]}";
  return out;
}

}  // namespace

int main() {
  const std::string utf8 = MakeUpdateList();
  const std::wstring document = text::Utf8ToWide(utf8);
  text::CJsonValue value;
  if (!text::ParseJson(document, value) || value.Find(L"files") == nullptr) {
    std::fprintf(stderr, "the generated document did not parse\n");
    return 1;
  }
  const std::size_t files = value.Find(L"files")->AsArray().size();

  using Clock = std::chrono::steady_clock;
  int parses = 0;
  const auto start = Clock::now();
  double seconds = 0.0;
  do {
    text::ParseJson(document, value);
    ++parses;
    seconds = std::chrono::duration<double>(Clock::now() - start).count();
  } while (seconds < kMinimumSeconds);

  const double megabytes = static_cast<double>(utf8.size()) / (1024.0 * 1024.0);
  std::printf("document: %zu bytes of UTF-8, %zu files\n", utf8.size(), files);
  std::printf("parses: %d in %.2f s\n", parses, seconds);
  std::printf("%.3f ms per parse, %.1f MB/s\n", seconds * 1000.0 / parses, megabytes * parses / seconds);
  return 0;
}
