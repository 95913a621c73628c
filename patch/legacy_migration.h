#pragma once
// Earlier launchers kept their files in one shared folder; this launcher keeps
// them per installation. Their files are carried over without ever replacing
// one the runtime folder already has, so running it again changes nothing.

#include <string>

namespace patch {

// When the legacy folder exists, creates the runtime folder and copies every
// regular file directly inside the legacy folder into it, keeping files
// already there. True when nothing failed (also when there is nothing to do).
bool MigrateLegacyFiles(const std::wstring& legacyFolder, const std::wstring& runtimeFolder);

}  // namespace patch
