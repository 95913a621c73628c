#include "patch/patch_progress.h"

namespace patch {

std::wstring PatchSummaryText(const SPatchOutcome& outcome) {
  if (outcome.failedCount == 0) return {};
  std::wstring text = outcome.failedCount == 1
                          ? L"1 file could not be updated: " + outcome.firstFailedPath
                          : std::to_wstring(outcome.failedCount) + L" files could not be updated, starting with " +
                                outcome.firstFailedPath;
  if (!outcome.firstFailedReason.empty()) text += L" (" + outcome.firstFailedReason + L")";
  text += L".";
  if (outcome.appliedCount != 0) text += L" The rest of the update was applied.";
  return text;
}

}  // namespace patch
