#pragma once
// Helpers of the launch tests: the probe program (process_probe.cpp) and the
// files the program carries.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace launch_test {

// The probe built beside the test executable.
std::filesystem::path ProbePath();

// The probe's file name with another stem ("name" or "name.exe").
std::wstring ProbeName(const std::wstring& stem);

// A copy of the probe under another file name, executable like the original.
std::filesystem::path CopyProbe(const std::filesystem::path& folder, const std::wstring& fileName);

// Starts the program through platform::StartProcess; the OS error code in `code`.
bool Start(const std::filesystem::path& executable, const std::vector<std::wstring>& arguments,
           const std::filesystem::path& folder, std::uint32_t& code);

// Waits (up to 30 s) for the probe started in `folder` to write its record;
// the lines of "probe.out" (working folder, then arguments), or none.
std::vector<std::string> WaitForProbeRecord(const std::filesystem::path& folder);

// Lets a probe started with "--hold" in `folder` end.
void ReleaseProbe(const std::filesystem::path& folder);

// The bytes of one of the program's embedded resources.
std::string ResourceText(int id);

// Polls `condition` every 50 ms for up to 30 s; its last answer.
template <typename Condition>
bool Eventually(Condition condition) {
  for (int i = 0; i < 600; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return condition();
}

}  // namespace launch_test
