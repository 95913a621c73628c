#pragma once
#include <string>

namespace testing_support {

// The lower-case hexadecimal SHA-256 of `bytes`, as the launcher writes it.
std::wstring Sha256Of(const std::string& bytes);

}  // namespace testing_support
