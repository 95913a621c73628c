#pragma once
// Bytes compiled into the program under a numeric id: RCDATA resources of the
// executable on Windows, tables generated from the same files at build time
// on Linux (see cmake/Resources.cmake). Only executables built with
// vl_embed_resources carry them.

#include <cstdint>
#include <span>

namespace platform {

// The resource's bytes exactly as they were in the source file; empty when
// the program carries no resource of that id.
std::span<const std::uint8_t> LoadEmbeddedResource(int id);

}  // namespace platform
