#include "patch/patcher_service.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/paths.h"
#include "patch/line_file.h"
#include "platform/file_time.h"
#include "platform/locale_name.h"
#include "platform/path_text.h"

namespace patch {
namespace {

constexpr std::wstring_view kLegacyRuntimeFolderName = L"runtime";

std::wstring JoinPath(const std::wstring& folder, std::wstring_view name) {
  return platform::FromPath(platform::ToPath(folder) / platform::ToPath(name));
}

std::uint64_t& SeenVersionField(SPatchState& state, const std::wstring& channel) {
  return IsBetaChannel(channel) ? state.seenVersionBeta : state.seenVersionStable;
}

}  // namespace

SServiceFolders DefaultServiceFolders() {
  const LauncherConfig& config = CompiledLauncherConfig();
  return {RuntimeDirectory(), LegacyDataDirectory(), ResolveGameDirectory(config.gameFolder, config.gameExecutable),
          ModulePath()};
}

CPatcherService::CPatcherService(const LauncherConfig& config, SServiceFolders folders)
    : config_(config), folders_(std::move(folders)), integrityCache_(folders_.runtimeFolder) {}

CPatcherService::~CPatcherService() { actor_.Stop(); }

bool CPatcherService::InitializeState(std::wstring& errorText) {
  actor_.Start();
  actor_.PostAndWait([this] { LoadStateOnActor(); });
  errorText.clear();
  return true;
}

bool CPatcherService::SaveState(std::wstring& errorText) {
  bool saved = false;
  actor_.PostAndWait([&] { saved = SaveStateOnActor(errorText); });
  return saved;
}

SPatchState CPatcherService::GetStateSnapshot() {
  SPatchState snapshot;
  actor_.PostAndWait([&] { snapshot = state_; });
  return snapshot;
}

void CPatcherService::MutateState(const std::function<void(SPatchState&)>& mutation) {
  actor_.PostAndWait([&] { mutation(state_); });
}

void CPatcherService::SetLanguage(text::EPatcherLanguage language) {
  actor_.PostAndWait([&] { state_.language = language; });
}

void CPatcherService::RecordSeenVersion(const std::wstring& channel, std::uint64_t version) {
  actor_.PostAndWait([&] {
    std::uint64_t& floor = SeenVersionField(state_, channel);
    floor = std::max(floor, version);
  });
}

std::uint64_t CPatcherService::SeenVersionForChannel(const std::wstring& channel) {
  std::uint64_t seen = 0;
  actor_.PostAndWait([&] { seen = SeenVersionField(state_, channel); });
  return seen;
}

void CPatcherService::MarkInstalledAt(const SManifest& manifest, const std::wstring& fingerprint) {
  RecordSeenVersion(manifest.channel, manifest.version);
  MutateState([&](SPatchState& state) {
    state.installedBuild = manifest.version;
    state.manifestFingerprint = fingerprint;
  });
  std::wstring ignoredError;
  SaveState(ignoredError);
}

bool CPatcherService::LookupCachedHashOnActor(const std::wstring& fullPath, std::uint64_t size, std::int64_t mtime,
                                              std::wstring& sha256) {
  bool found = false;
  actor_.PostAndWait([&] { found = integrityCache_.Lookup(fullPath, size, mtime, sha256); });
  return found;
}

void CPatcherService::LookupCachedHashesOnActor(std::vector<SCachedHashQuery>& queries) {
  for (SCachedHashQuery& query : queries) query.stamped = platform::ReadFileStamp(*query.fullPath, query.stamp);
  actor_.PostAndWait([&] {
    for (SCachedHashQuery& query : queries) {
      query.cached = query.stamped && integrityCache_.Lookup(*query.fullPath, query.stamp.size,
                                                             query.stamp.lastWriteTime, query.sha256);
    }
  });
}

void CPatcherService::StoreCachedHashOnActor(const std::wstring& fullPath, std::uint64_t size,
                                             const std::wstring& sha256) {
  actor_.PostAndWait([&] {
    platform::SFileStamp stamp;
    const std::int64_t mtime = platform::ReadFileStamp(fullPath, stamp) ? stamp.lastWriteTime : 0;
    integrityCache_.Store(fullPath, size, mtime, sha256);
  });
}

void CPatcherService::PersistIntegrityCache() {
  actor_.PostAndWait([this] { integrityCache_.Persist(); });
}

void CPatcherService::LoadStateOnActor() {
  state_ = SPatchState{};
  state_.language = DetectLanguage();
  std::vector<std::wstring> lines;
  if (ReadUtf8Lines(JoinPath(folders_.runtimeFolder, config_.stateFileName), lines) ||
      (!folders_.legacyDataFolder.empty() &&
       ReadUtf8Lines(JoinPath(JoinPath(folders_.legacyDataFolder, kLegacyRuntimeFolderName), config_.stateFileName),
                     lines))) {
    ApplyPatchStateLines(lines, state_);
  }
}

bool CPatcherService::SaveStateOnActor(std::wstring& errorText) {
  switch (RewriteFile(JoinPath(folders_.runtimeFolder, config_.stateFileName), FormatPatchState(state_))) {
    case EFileWriteResult::NotOpened:
      errorText = L"Could not save local patch state.";
      return false;
    case EFileWriteResult::WriteFailed:
      errorText = L"Could not write local patch state.";
      return false;
    case EFileWriteResult::Written:
      break;
  }
  integrityCache_.Persist();
  errorText.clear();
  return true;
}

text::EPatcherLanguage CPatcherService::DetectLanguage() const {
  return text::LanguageForLocaleName(platform::UserDefaultLocaleName(), config_.defaultToArabic);
}

}  // namespace patch
