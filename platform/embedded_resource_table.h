#pragma once
// How a generated resource table hands its entries to LoadEmbeddedResource on
// Linux; nothing else includes this.

#include <cstddef>
#include <cstdint>
#include <span>

namespace platform {

struct SEmbeddedResource {
  int id;
  const std::uint8_t* bytes;
  std::size_t size;
};

// Called once by the generated table while the program starts; returns true
// so the table can keep the call in a static initialiser.
bool RegisterEmbeddedResources(std::span<const SEmbeddedResource> resources);

}  // namespace platform
