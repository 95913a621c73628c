#pragma once
// Files the private host serves besides the embedded resources: the patch
// note's cover picture, downloaded by the controller's synchronisation. The
// registry is process-wide and has its own lock, because the controller
// writes it from a worker thread while the asset handler reads it on the UI
// thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace webview {

// The largest file served.
inline constexpr std::uintmax_t kMaxMediaBytes = 8 * 1024 * 1024;

// The page path the cover picture is served at.
inline constexpr std::wstring_view kCoverMediaPath = L"/media/cover";

// Sets or replaces the local file that answers `path` (for example "/media/cover").
void RegisterMedia(std::wstring_view path, std::wstring filePath);

// The file registered for `path`, compared exactly; none when nothing is.
std::optional<std::wstring> FindMedia(std::wstring_view path);

}  // namespace webview
