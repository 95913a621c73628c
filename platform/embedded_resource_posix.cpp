#include "platform/embedded_resource.h"

#include <map>
#include <mutex>

#include "platform/embedded_resource_table.h"

namespace platform {
namespace {

struct SResourceRegistry {
  std::mutex mutex;
  std::map<int, std::span<const std::uint8_t>> resources;
};

// Built on first use, so registration from another file's static initialiser
// never meets an unconstructed map.
SResourceRegistry& Registry() {
  static SResourceRegistry registry;
  return registry;
}

}  // namespace

bool RegisterEmbeddedResources(std::span<const SEmbeddedResource> resources) {
  SResourceRegistry& registry = Registry();
  std::lock_guard lock(registry.mutex);
  for (const SEmbeddedResource& resource : resources) {
    registry.resources[resource.id] = {resource.bytes, resource.size};
  }
  return true;
}

std::span<const std::uint8_t> LoadEmbeddedResource(int id) {
  SResourceRegistry& registry = Registry();
  std::lock_guard lock(registry.mutex);
  const auto found = registry.resources.find(id);
  return found == registry.resources.end() ? std::span<const std::uint8_t>() : found->second;
}

}  // namespace platform
