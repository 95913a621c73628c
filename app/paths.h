#pragma once
// Where the launcher keeps its own files and where it finds the game.
// Paths are wide texts joined with this system's separator ("\" on Windows,
// "/" on Linux). None of these functions throws; each has a fallback.

#include <functional>
#include <string>

#include "app/launcher_config.h"

// The launcher executable's path. When the OS gives no answer, or one that may
// have been cut off by its 260-character buffer, the current directory joined
// with "TARNHOLD.exe" stands in.
std::wstring ModulePath();
// The decision behind ModulePath, given the OS answer (empty on failure).
std::wstring ModulePathFromQuery(const std::wstring& reported, const std::wstring& currentDirectory);
// The folder that holds the launcher executable.
std::wstring ModuleDirectory();

// Start-up sets the per-install data folder once; an empty text means none.
void SetInstallDataDirectory(const std::wstring& folder);
// The per-install data folder when one is set, else the module folder joined with ".runtime".
std::wstring RuntimeDirectory();

// True for exactly 32 characters, each "0"-"9" or "a"-"f".
bool IsInstallIdentity(const std::wstring& identity);
// base + "Vardeni" + "Launcher" + identity; empty when the identity fails
// IsInstallIdentity or the base is empty.
std::wstring InstallDataDirectory(const std::wstring& base, const std::wstring& identity);

// Cache of downloaded page resources: the user's own cache base
// (platform::UserCacheDirectory, else RuntimeDirectory()) + "OmbrisaAdminPanel"
// + "Patcher" + "ui_cache".
std::wstring UiCacheDirectory();
// The folder earlier launchers used: local app data + "OmbrisaAdminPanel" +
// "Patcher"; empty when there is no local app data folder.
std::wstring LegacyDataDirectory();

using FileExistsFunction = std::function<bool(const std::wstring& path)>;

// Finds the game folder for the configured text. An absolute text is taken
// as it is. Otherwise the text is looked for below the module folder and its
// first three ancestors: below the module folder it is accepted when it merely
// exists, below an ancestor only when it holds the game executable. When
// nothing qualifies the first candidate is returned, so callers report the game
// as missing there.
std::wstring ResolveGameDirectory(const std::wstring& configuredText, const std::wstring& moduleFolder,
                                  const std::wstring& executableName, const FileExistsFunction& exists);
// The same from the real module folder and file system.
std::wstring ResolveGameDirectory(const std::wstring& configuredText, const std::wstring& executableName);

// The resolved game folder joined with the game executable's name.
std::wstring GameExecutablePath(const LauncherConfig& config = CompiledLauncherConfig());
