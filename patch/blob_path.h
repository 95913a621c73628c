#pragma once
// Content addressing: a blob on the patch host is found by its SHA-256 alone.

#include <string>
#include <string_view>

namespace patch {

// True for exactly 64 characters from "0123456789abcdef" (upper case refused).
bool IsSha256Hex(std::wstring_view text);

// "blobs/" + the first two hash characters + "/" + the hash, relative to the
// patch host's base address; empty when `sha256` is not IsSha256Hex.
std::wstring BlobPathForHash(std::wstring_view sha256);

}  // namespace patch
