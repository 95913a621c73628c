#pragma once
// The patch host's content-addressed blobs: "blobs/" + the first two digits
// of a file's SHA-256 + "/" + the whole digest. A blob that is already there
// with the right size is kept as it is: launchers may be downloading it.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace publisher {

enum class EBlobOutcome { Written, Reused, Repaired };

class CBlobStore {
 public:
  explicit CBlobStore(std::filesystem::path hostFolder) : hostFolder_(std::move(hostFolder)) {}

  // Makes sure the blob of `sha256` holds `source`'s bytes. A missing blob is
  // copied beside its final name, checked against the digest and size (the
  // source may have changed since it was hashed) and renamed into place; one
  // of the wrong size is replaced the same way (Repaired).
  bool Store(const std::filesystem::path& source, const std::wstring& sha256, std::uint64_t size,
             EBlobOutcome& outcome, std::wstring& error) const;

  // The same for a blob made in memory (a chunk index) whose digest is `sha256`.
  bool StoreBytes(std::string_view bytes, const std::wstring& sha256, EBlobOutcome& outcome,
                  std::wstring& error) const;

  std::filesystem::path BlobFile(const std::wstring& sha256) const;

 private:
  // True when the blob is already there with the right size.
  bool HasBlob(const std::filesystem::path& target, std::uint64_t size) const;

  std::filesystem::path hostFolder_;
};

}  // namespace publisher
