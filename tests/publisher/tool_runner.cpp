#include "tests/publisher/tool_runner.h"

#include "platform/module_path.h"
#include "platform/path_text.h"

namespace publisher_testing {

std::filesystem::path ToolPath() {
  return platform::ToPath(platform::QueryModulePath()).parent_path() / VL_PUBLISHER_TOOL_FROM_TESTS;
}

}  // namespace publisher_testing
