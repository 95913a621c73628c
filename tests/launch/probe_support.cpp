#include "tests/launch/probe_support.h"

#include <fstream>
#include <sstream>

#include "platform/embedded_resource.h"
#include "platform/module_path.h"
#include "platform/path_text.h"
#include "platform/process_start.h"

namespace launch_test {

namespace fs = std::filesystem;

fs::path ProbePath() {
  const fs::path self = platform::ToPath(platform::QueryModulePath());
  return self.parent_path() / platform::ToPath(L"vl_launch_probe" + platform::FromPath(self.extension()));
}

std::wstring ProbeName(const std::wstring& stem) { return stem + platform::FromPath(ProbePath().extension()); }

fs::path CopyProbe(const fs::path& folder, const std::wstring& fileName) {
  fs::create_directories(folder);
  const fs::path copy = folder / platform::ToPath(fileName);
  fs::copy_file(ProbePath(), copy, fs::copy_options::overwrite_existing);
  fs::permissions(copy, fs::status(ProbePath()).permissions());
  return copy;
}

bool Start(const fs::path& executable, const std::vector<std::wstring>& arguments, const fs::path& folder,
           std::uint32_t& code) {
  platform::SProcessStart request;
  request.executable = platform::FromPath(executable);
  request.arguments = arguments;
  request.workingDirectory = platform::FromPath(folder);
  return platform::StartProcess(request, code);
}

std::vector<std::string> WaitForProbeRecord(const fs::path& folder) {
  const fs::path record = folder / "probe.out";
  if (!Eventually([&] { return fs::exists(record); })) return {};
  std::ifstream in(record, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

void ReleaseProbe(const fs::path& folder) { std::ofstream(folder / "probe.release").put('1'); }

std::string ResourceText(int id) {
  const std::span<const std::uint8_t> bytes = platform::LoadEmbeddedResource(id);
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace launch_test
