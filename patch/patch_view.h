#pragma once
// The controller's view of the patch situation. Synchronisation fills the
// fields below; the controller keeps its own fields alongside.

#include <cstdint>
#include <string>

namespace patch {

// Values are fixed: the page and the logs see them.
enum class EPatchPhase : std::uint32_t {
  Syncing = 1,
  UpToDate = 2,
  PatchAvailable = 3,
  Preparing = 4,
  Applying = 5,
  Done = 6,
  ConnectionLost = 7,
  Maintenance = 8,
};

struct SPatchView {
  EPatchPhase phase = EPatchPhase::Syncing;
  std::uint64_t installedBuild = 0;  // the state's, or the list's once the folder is adopted
  std::uint64_t targetBuild = 0;     // the accepted list's version
  std::uint64_t fileCount = 0;       // entries of the accepted list
  float progress = 0.0f;             // 1 when up to date, 0 when a patch is available
  bool actionReady = false;          // play when up to date, patch when a patch is available
  bool patchNeeded = false;
  bool folderChecked = false;        // the folder decision began; cleared by maintenance
  bool launcherUpdating = false;     // a launcher self-update was started
  std::wstring statusText;
  std::wstring errorText;
};

}  // namespace patch
