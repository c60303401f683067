#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CRegexVectorHolder.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"

// Lists and questions for the tests of the holder.
namespace HolderSupport {

using Strings = std::vector<std::string>;

inline CUsePtr<CVariant> ListOf(const Strings& elements) {
  auto list = MakeUseCounted<CVariant>(VariantType::RegexList);
  for (const std::string& element : elements) list->AddToList(MakeText(element).Get());
  return list;
}

inline CUsePtr<CVariant> ValueOf(VariantType type, const std::string& text) {
  auto value = MakeUseCounted<CVariant>();
  value->SetString(type, MakeText(text).Get());
  return value;
}

// The element that Find names, or nothing on a miss. Both ways of asking must agree.
inline std::optional<std::string> FindIn(const CRegexVectorHolder& holder, std::string_view text) {
  CUsePtr<CUnicodeString> source;
  const bool found = holder.Find(text, &source);
  EXPECT_EQ(holder.Find(text, nullptr), found) << text;
  EXPECT_EQ(static_cast<bool>(source), found) << text;
  if (!found) return std::nullopt;
  return std::string(source->Text().Utf8());
}

inline Strings PatternsOf(const CRegexVectorHolder& holder) {
  Strings patterns;
  for (const auto& entry : holder.Entries()) patterns.push_back(entry.fScanner->Pattern());
  return patterns;
}

// Holders that are built while this lives keep what the dumps print.
class Diagnostics {
public:
  Diagnostics() { SetRegexHolderDiagnostics(true); }
  ~Diagnostics() { SetRegexHolderDiagnostics(false); }
};

using Dump = void (CRegexVectorHolder::*)(Strings&) const;

inline Strings DumpOf(const CRegexVectorHolder& holder, Dump dump) {
  Strings lines = {"left from before"};
  (holder.*dump)(lines);
  return lines;
}

}  // namespace HolderSupport
