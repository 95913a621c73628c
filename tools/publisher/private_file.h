#pragma once
// A new file that only its owner may read: where the publisher keeps a secret
// signing key.

#include <filesystem>
#include <string>
#include <string_view>

namespace publisher {

// Creates `path`, which must not exist yet, with owner-only access (mode 0600
// on POSIX systems; on Windows the folder's inherited access applies) and
// writes `bytes` into it. False with a sentence in `error` otherwise.
bool CreatePrivateFile(const std::filesystem::path& path, std::string_view bytes, std::wstring& error);

}  // namespace publisher
