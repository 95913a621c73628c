#pragma once
// The launcher's settings record. Every value is fixed at build time; only the
// patch host and the two public keys differ between branded builds, and those
// come from the CMake cache (see launcher_config_values.cpp.in).
//
// The engine takes the record by reference, so tests and operator tools can
// hand it a record of their own.

#include <array>
#include <cstdint>
#include <string>

using PublicKey = std::array<std::uint8_t, 32>;

struct LauncherConfig {
  std::wstring displayName = L"Vardeni Launcher";
  std::wstring launcherVersion = L"1.0.5";
  std::wstring userAgent = L"VardeniLauncher/1.0.5";
  std::wstring productWord = L"Vardeni";
  std::wstring subtitle = L"Official launcher";
  std::wstring windowClass = L"VardeniLauncherWindow";
  std::wstring patchHost;
  std::wstring gameExecutable = L"vardeni2.exe";
  // Relative to the launcher's folder (resolved by ResolveGameDirectory) or absolute.
  std::wstring gameFolder = L"app";
  std::wstring stateFileName = L"launcher.state";

  int windowWidth = 1000;
  int windowHeight = 640;
  int minWindowWidth = 940;
  int minWindowHeight = 600;

  std::uint32_t resolveConnectTimeoutMs = 8000;
  std::uint32_t sendTimeoutMs = 8000;
  std::uint32_t receiveTimeoutMs = 15000;
  // A response body that brings fewer bytes a second than this, averaged over
  // a whole window, ends its attempt: a host that trickles a few bytes now and
  // then is never idle long enough for the receive time-out.
  std::uint32_t minimumBodyRate = 1024;
  std::uint32_t minimumBodyRateWindowMs = 60000;
  int httpAttempts = 3;

  bool startGameAfterPatch = true;
  bool defaultToArabic = true;

  // Tried in order; an all-zero slot is empty and skipped.
  std::array<PublicKey, 2> publicKeys{};
};

// The record this build was configured with.
const LauncherConfig& CompiledLauncherConfig();

// True when the patch host begins with "https://" (exact case).
bool IsHttpsPatchHost(const std::wstring& patchHost);
