#include "text/json.h"

#include <type_traits>

namespace text {

// Arrays of values grow by moving, not copying, only if a value moves without throwing.
static_assert(std::is_nothrow_move_constructible_v<CJsonValue>);

const CJsonValue* CJsonValue::Find(std::wstring_view key) const {
  const auto* members = std::get_if<CJsonObject>(&data_);
  if (members == nullptr) return nullptr;
  const auto found = members->find(key);
  return found == members->end() ? nullptr : &found->second;
}

}  // namespace text
