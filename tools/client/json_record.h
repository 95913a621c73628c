#pragma once
// One line of the client's --json output: an object whose first member names
// the event, assembled in a fixed member order with the JSON writer primitives.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace client {

class CJsonRecord {
 public:
  explicit CJsonRecord(std::string_view event);

  // Distinct names: a wide literal would otherwise pick a bool overload.
  CJsonRecord& AddCount(std::string_view key, std::uint64_t value);
  CJsonRecord& AddFlag(std::string_view key, bool value);
  CJsonRecord& AddFraction(std::string_view key, float value);
  CJsonRecord& AddText(std::string_view key, std::wstring_view value);
  CJsonRecord& AddTextList(std::string_view key, const std::vector<std::wstring>& values);
  CJsonRecord& AddNull(std::string_view key);

  // The finished object, without a line break.
  std::string Text() const { return out_ + "}"; }

 private:
  std::string out_;
};

}  // namespace client
