// Patch host addresses and the fetch of the current update list.
#include <algorithm>
#include <string_view>
#include <vector>

#include "crypto/manifest_signature.h"
#include "crypto/sha256.h"
#include "net/http_client.h"
#include "patch/channel_pointer.h"
#include "patch/patcher_service.h"
#include "platform/tick_count.h"

namespace patch {
namespace {

constexpr std::wstring_view kStableChannel = L"stable";

std::string_view AsText(const std::vector<std::uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::wstring CPatcherService::BuildPatchUrl(const std::wstring& relativeName, bool cacheBust) const {
  std::wstring url = config_.patchHost;
  if (!url.empty() && url.back() != L'/') url += L'/';
  std::wstring relative = relativeName;
  for (wchar_t& c : relative) {
    if (c == L'\\') c = L'/';
  }
  url.append(relative, std::min(relative.find_first_not_of(L'/'), relative.size()));
  if (cacheBust) {
    url += url.find(L'?') == std::wstring::npos ? L"?v=" : L"&v=";
    url += std::to_wstring(platform::TickCountMs());
  }
  return url;
}

bool CPatcherService::FetchManifest(const net::CHttpClient& http, SManifest& manifest, std::wstring* fingerprint,
                                    std::wstring& errorText) {
  manifest = SManifest{};
  if (fingerprint != nullptr) fingerprint->clear();
  errorText.clear();

  std::wstring channel = GetStateSnapshot().channel;
  if (channel.empty()) channel = kStableChannel;

  const net::SHttpGetResult pointer =
      http.Get(BuildPatchUrl(ChannelPointerFileName(channel), true), kMaxChannelPointerBytes);
  if (!pointer.ok) {
    errorText = L"Could not read the channel pointer.";
    return false;
  }
  std::uint64_t release = 0;
  if (!ParseChannelPointer(AsText(pointer.body), release)) {
    errorText = L"The channel pointer is not a version number.";
    return false;
  }

  const net::SHttpGetResult list = http.Get(BuildPatchUrl(ManifestFileName(release), false), kMaxManifestBytes);
  if (list.tooLarge) {
    // Read only up to its first byte past the limit, the list cannot be held
    // against its signature: its size alone refuses it.
    errorText = ManifestVerdictText(EManifestVerdict::TooLarge);
    return false;
  }
  const net::SHttpGetResult signature =
      list.ok ? http.Get(BuildPatchUrl(SignatureFileName(release), false), crypto::kMaxSignatureFileBytes)
              : net::SHttpGetResult{};
  if (!list.ok || !signature.ok) {
    errorText = L"The update list is not available yet.";
    return false;
  }

  const std::uint64_t floor = SeenVersionForChannel(channel);
  const EManifestVerdict verdict = AcceptManifest(list.body.data(), list.body.size(), AsText(signature.body), release,
                                                  channel, floor, config_.publicKeys, manifest);
  if (verdict != EManifestVerdict::Valid) {
    errorText = ManifestVerdictText(verdict);
    return false;
  }

  if (fingerprint != nullptr && !crypto::HashMemorySha256(list.body.data(), list.body.size(), *fingerprint, errorText)) {
    manifest = SManifest{};
    fingerprint->clear();
    return false;
  }
  errorText.clear();
  return true;
}

}  // namespace patch
