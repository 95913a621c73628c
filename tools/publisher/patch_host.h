#pragma once
// Read access to a published patch host, either a local folder (as the
// publisher writes it) or an https address (as launchers see it).

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace publisher {

class CPatchHost {
 public:
  virtual ~CPatchHost() = default;

  // The file's full path or address, for messages.
  virtual std::wstring Where(const std::wstring& name) const = 0;
  // A small file whole (pointer, list, signature).
  virtual bool Read(const std::wstring& name, std::string& bytes, std::wstring& error) const = 0;
  // The file as a local one to measure: `missing` tells a file the host does
  // not have from one that could not be fetched. A download stops past
  // `maxBytes` and fails. Release it when done.
  virtual bool Fetch(const std::wstring& name, std::uint64_t maxBytes, std::filesystem::path& local, bool& missing,
                     std::wstring& error) const = 0;
  virtual void Release(const std::filesystem::path& local) const = 0;
};

// "https://..." opens the address with the launcher's HTTP client; anything
// else is a folder. False with a sentence when the host cannot be used.
bool OpenPatchHost(const std::wstring& location, std::unique_ptr<CPatchHost>& host, std::wstring& error);

}  // namespace publisher
