#pragma once
// Free space and volume identity of a folder, so a patch can refuse to start
// when the disk cannot hold it (GetDiskFreeSpaceExW / GetVolumePathNameW;
// statvfs / st_dev).

#include <cstdint>
#include <filesystem>
#include <string>

namespace platform {

// Bytes the calling user may still write on the volume holding `folder`.
// False when the folder cannot be queried (for example, it does not exist).
bool QueryFreeDiskSpace(const std::filesystem::path& folder, std::uint64_t& freeBytes);

// A text naming the volume that holds `folder`: its mount root on Windows
// ("C:\"), its device number elsewhere. Two folders on one volume get texts
// that are equal when compared without regard to case.
bool QueryVolumeName(const std::filesystem::path& folder, std::wstring& volumeName);

}  // namespace platform
