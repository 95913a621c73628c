// "launcher.state" as it is loaded; what the launcher writes back from it must
// load again as the same state.
#include <cstddef>
#include <cstdint>
#include <string>

#include "patch/line_file.h"
#include "patch/patch_state.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patch::SPatchState loaded;
  patch::ApplyPatchStateLines(patch::SplitUtf8Lines({reinterpret_cast<const char*>(data), size}), loaded);
  const std::string written = patch::FormatPatchState(loaded);
  patch::SPatchState reloaded;
  patch::ApplyPatchStateLines(patch::SplitUtf8Lines(written), reloaded);
  if (patch::FormatPatchState(reloaded) != written) __builtin_trap();
  return 0;
}
