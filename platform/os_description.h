#pragma once
// A short name and version of the running operating system for the log's
// start line, for example "Windows 10.0.22631" or "Linux 6.1.0-13-amd64".

#include <string>

namespace platform {

// Never fails: "Windows (version unknown)" / "Linux (version unknown)" when
// the version cannot be read.
std::wstring OperatingSystemDescription();

}  // namespace platform
