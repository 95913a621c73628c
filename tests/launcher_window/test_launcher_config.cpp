// The launcher under test: the real program with its compiled-in patch host and
// key taken from VL_TEST_PATCH_HOST and VL_TEST_PUBLIC_KEY (64 hex digits),
// so one build can be pointed at the test servers' port. The product itself
// reads no setting at run time.
#include <cstdlib>
#include <string>

#include "app/launcher_config.h"
#include "text/utf.h"

namespace {

LauncherConfig MakeTestConfig() {
  LauncherConfig config;
  const char* host = std::getenv("VL_TEST_PATCH_HOST");
  config.patchHost = text::Utf8ToWide(host != nullptr ? host : "");
  const std::string key = std::getenv("VL_TEST_PUBLIC_KEY") != nullptr ? std::getenv("VL_TEST_PUBLIC_KEY") : "";
  for (std::size_t i = 0; i < config.publicKeys[0].size() && 2 * i + 2 <= key.size(); ++i) {
    config.publicKeys[0][i] = static_cast<std::uint8_t>(std::stoul(key.substr(2 * i, 2), nullptr, 16));
  }
  return config;
}

}  // namespace

const LauncherConfig& CompiledLauncherConfig() {
  static const LauncherConfig config = MakeTestConfig();
  return config;
}
