#pragma once
// Runs the built vardeni-publish program, as an operator would, and collects
// what it printed and its exit status.

#include <filesystem>
#include <string>
#include <vector>

namespace publisher_testing {

struct SToolRun {
  int exitCode = -1;
  std::string out;  // standard output, UTF-8
  std::string err;  // standard error, UTF-8
};

// The tool, found relative to the test program (the build sets
// VL_PUBLISHER_TOOL_FROM_TESTS).
std::filesystem::path ToolPath();

// Runs the tool with these arguments and waits for it.
SToolRun RunTool(const std::vector<std::wstring>& arguments);

}  // namespace publisher_testing
