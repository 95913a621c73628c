#include "tools/client/client_commands.h"

#include "net/http_client.h"
#include "patch/patcher_service.h"
#include "text/utf.h"
#include "tools/client/json_record.h"
#include "tools/client/progress_view.h"

namespace client {
namespace {

// The launcher's texts for the outcomes a person sees.
constexpr std::wstring_view kPatchComplete = L"Patch complete. The game is ready to launch.";
constexpr std::wstring_view kPatchFailed = L"Patch failed";
constexpr std::wstring_view kConnectionLost = L"Connection lost";

std::string Utf8(std::wstring_view text) { return text::WideToUtf8(text); }

std::string BuildFigures(const patch::SPatchView& view) {
  return "installed build " + std::to_string(view.installedBuild) + ", published build " +
         std::to_string(view.targetBuild) + " (" + std::to_string(view.fileCount) + " files)";
}

std::string OrphanCountText(std::uint64_t files, std::uint64_t bytes) {
  return std::to_string(files) + " unrecognised file(s), " + FormatByteCount(bytes);
}

class CCommandRunner {
 public:
  CCommandRunner(const SClientOptions& options, CClientOutput& output)
      : options_(options),
        output_(output),
        config_(ClientLauncherConfig(options)),
        service_(config_, ClientServiceFolders(options)),
        http_(config_) {}

  int Run() {
    std::wstring error;
    service_.InitializeState(error);
    if (!options_.channel.empty()) {
      service_.MutateState([&](patch::SPatchState& state) { state.channel = options_.channel; });
      // Kept for later runs without --channel; a failed save only loses that convenience.
      service_.SaveState(error);
    }
    switch (options_.command) {
      case EClientCommand::Sync:
        return Sync();
      case EClientCommand::Patch:
        return Patch(false);
      case EClientCommand::Repair:
        return Patch(true);
      case EClientCommand::Orphans:
        return ListOrphans();
      case EClientCommand::RemoveOrphans:
        return RemoveOrphans();
    }
    return kExitFailed;
  }

 private:
  int Sync() {
    patch::SPatchView view;
    std::wstring error;
    const bool ok = service_.SyncPatchState(http_, false, view, error);
    output_.Record(CJsonRecord("sync")
                       .AddFlag("ok", ok)
                       .AddCount("phase", static_cast<std::uint32_t>(view.phase))
                       .AddText("status", ok ? view.statusText : std::wstring(kConnectionLost))
                       .AddCount("installedBuild", view.installedBuild)
                       .AddCount("targetBuild", view.targetBuild)
                       .AddCount("fileCount", view.fileCount)
                       .AddFlag("patchNeeded", view.patchNeeded)
                       .AddText("error", error)
                       .Text());
    if (!ok) {
      output_.Text(Utf8(kConnectionLost));
      output_.Problem(error);
      return kExitFailed;
    }
    output_.Text(Utf8(view.statusText));
    output_.Text(BuildFigures(view));
    return view.patchNeeded ? kExitPatchAvailable : kExitDone;
  }

  int Patch(bool repair) {
    patch::SPatchOutcome outcome;
    std::wstring error;
    const bool ran = service_.RunPatch(
        http_, repair, patch::EPatchTrigger::User,
        [this](const patch::SPatchProgress& progress) { output_.Progress().Show(progress); }, outcome, error);
    output_.Progress().Finish();
    const bool ok = ran && outcome.failedCount == 0;
    const std::uint64_t installed = service_.GetStateSnapshot().installedBuild;
    if (ok) error.clear();
    if (!ok && error.empty()) error = kConnectionLost;
    output_.Record(CJsonRecord(repair ? "repair" : "patch")
                       .AddFlag("ok", ok)
                       .AddText("status", ok ? L"Up to date" : kPatchFailed)
                       .AddCount("installedBuild", installed)
                       .AddCount("appliedCount", outcome.appliedCount)
                       .AddCount("failedCount", outcome.failedCount)
                       .AddText("firstFailedPath", outcome.firstFailedPath)
                       .AddText("firstFailedReason", outcome.firstFailedReason)
                       .AddCount("orphanFiles", outcome.orphanFiles)
                       .AddCount("orphanBytes", outcome.orphanBytes)
                       .AddText("error", error)
                       .Text());
    if (!ok) {
      output_.Text(Utf8(kPatchFailed));
      output_.Problem(error);
      return kExitFailed;
    }
    output_.Text(Utf8(kPatchComplete));
    output_.Text("installed build " + std::to_string(installed) + ", " + std::to_string(outcome.appliedCount) +
                 " file(s) applied");
    if (outcome.orphanFiles > 0) {
      output_.Text(OrphanCountText(outcome.orphanFiles, outcome.orphanBytes) +
                   " not in the release (listed by the orphans command)");
    }
    return kExitDone;
  }

  // The full orphan list against the published release.
  bool ScanAgainstHost(patch::SOrphanScan& scan, std::wstring& error) {
    patch::SManifest manifest;
    if (!service_.FetchManifest(http_, manifest, nullptr, error)) return false;
    return service_.ScanOrphans(manifest, patch::kUnlimitedOrphanSample, scan, error);
  }

  int ListOrphans() {
    patch::SOrphanScan scan;
    std::wstring error;
    const bool ok = ScanAgainstHost(scan, error);
    output_.Record(CJsonRecord("orphans")
                       .AddFlag("ok", ok)
                       .AddCount("orphanFiles", scan.orphanFiles)
                       .AddCount("orphanBytes", scan.orphanBytes)
                       .AddTextList("orphans", scan.orphanSample)
                       .AddText("error", error)
                       .Text());
    if (!ok) {
      output_.Problem(error);
      return kExitFailed;
    }
    output_.Text(OrphanCountText(scan.orphanFiles, scan.orphanBytes));
    for (const std::wstring& path : scan.orphanSample) output_.Text("  " + Utf8(path));
    return kExitDone;
  }

  int RemoveOrphans() {
    patch::SOrphanScan scan;
    std::wstring error;
    if (!ScanAgainstHost(scan, error)) {
      output_.Record(CJsonRecord("remove-orphans").AddFlag("ok", false).AddText("error", error).Text());
      output_.Problem(error);
      return kExitFailed;
    }
    const patch::SOrphanRemoval removal = service_.RemoveOrphans(scan.orphanSample);
    std::wstring message = std::to_wstring(removal.removedFiles) + L" unrecognised file(s) removed";
    if (removal.failedFiles > 0) message += L", " + std::to_wstring(removal.failedFiles) + L" could not be removed";
    const bool ok = removal.failedFiles == 0;
    output_.Record(CJsonRecord("remove-orphans")
                       .AddFlag("ok", ok)
                       .AddCount("removedFiles", removal.removedFiles)
                       .AddCount("removedBytes", removal.removedBytes)
                       .AddCount("failedFiles", removal.failedFiles)
                       .AddText("message", message)
                       .Text());
    output_.Text(Utf8(message));
    if (!ok) output_.Problem(message);
    return ok ? kExitDone : kExitFailed;
  }

  const SClientOptions& options_;
  CClientOutput& output_;
  const LauncherConfig config_;
  patch::CPatcherService service_;
  net::CHttpClient http_;
};

}  // namespace

int RunClientCommand(const SClientOptions& options, CClientOutput& output) {
  return CCommandRunner(options, output).Run();
}

}  // namespace client
