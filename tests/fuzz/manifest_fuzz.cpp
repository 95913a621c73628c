// Acceptance of an update list once its signature has passed: the list of
// release 7 of "stable", with no rollback floor, so the seeds reach the files.
#include <cstddef>
#include <cstdint>

#include "patch/manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patch::SManifest manifest;
  patch::ParseManifest(data, size, 7, L"stable", 0, manifest);
  return 0;
}
