// Deterministic mutation fuzzing of the parser: hostile text must never crash
// it (run under the sanitizers on Linux), and whatever it accepts must keep
// the whole-document rules.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "text/json.h"
#include "text/utf.h"

namespace {

using text::CJsonValue;
using text::ParseJson;

const wchar_t* const kSeeds[] = {
    L"{\"schema\":1,\"version\":42,\"channel\":\"live\",\"files\":[{\"path\":\"data/a.pak\","
    L"\"sha256\":\"00ff\",\"size\":123}]}",
    L"[1,-0.5e+3,2E-2,true,false,null,\"\\u00e9\\ud83d\\ude00\\n\",[[[]]],{\"k\":{}}]",
    L"[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]",
};

// Characters that steer the parser into its interesting branches.
constexpr std::wstring_view kAlphabet = L"{}[]\",:\\/-+.eE0123456789tfnrul \t\n\r";

std::wstring Mutate(std::wstring document, std::mt19937& random) {
  const auto pick = [&](std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound)(random); };
  const auto any_character = [&]() {
    return pick(3) == 0 ? static_cast<wchar_t>(pick(0xFFFF)) : kAlphabet[pick(kAlphabet.size() - 1)];
  };
  for (std::size_t m = 1 + pick(3); m > 0; --m) {
    const std::size_t at = pick(document.size());
    if (pick(3) == 0) {
      document.resize(at);
    } else if (at < document.size() && pick(1) == 0) {
      document[at] = any_character();
    } else {
      document.insert(document.begin() + static_cast<std::ptrdiff_t>(at), any_character());
    }
  }
  return document;
}

TEST(JsonFuzz, MutatedDocumentsNeverCrashAndKeepDocumentRules) {
  std::mt19937 random(20261122);
  int accepted = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::wstring document = Mutate(kSeeds[i % std::size(kSeeds)], random);
    CJsonValue value;
    if (!ParseJson(document, value)) {
      ASSERT_TRUE(value.IsNull()) << text::WideToUtf8(document);
      continue;
    }
    ++accepted;
    CJsonValue again;
    ASSERT_TRUE(ParseJson(L"\r\n\t " + document + L" \n", again)) << text::WideToUtf8(document);
    ASSERT_EQ(again.Kind(), value.Kind()) << text::WideToUtf8(document);
    ASSERT_FALSE(ParseJson(document + L"x", again)) << text::WideToUtf8(document);
  }
  // The mutations must leave some documents valid, or the invariants above go unexercised.
  EXPECT_GT(accepted, 100);
}

}  // namespace
