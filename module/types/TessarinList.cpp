#include "module/types/TessarinList.h"

#include "Common/CVariant.h"
#include "module/types/EngineGuard.h"

namespace Tovrin {

TessarinList::TessarinList(TypeId typeId)
    : fTypeId(typeId), fRegexes(MakeUseCounted<CVariant>(VariantType::RegexList)) {}

TessarinList::~TessarinList() = default;

std::string TessarinList::AnchoredEntry(std::string_view expression) {
  std::string entry = "regex(^";
  entry += expression;
  entry += "$)";
  return entry;
}

void TessarinList::AddEntry(const std::string& text) {
  fRegexes->AddToList(MakeText(text.c_str()).Get());
  fEntries.push_back(text);
}

bool TessarinList::Matches(std::string_view text) const {
  if (fEntries.empty()) return false;
  return Guarded([&] { return fRegexes->Matches(text); }) == 1;
}

const std::string& TessarinList::Text(std::uint64_t index) const {
  static const std::string kNoText;
  return index < fEntries.size() ? fEntries[index] : kNoText;
}

IUserDefinedType* TessarinList::Interface_Clone() const {
  AutoRefPtr<TessarinList> copy(new TessarinList(fTypeId));
  copy->fRegexes = MakeUseCounted<CVariant>(*fRegexes);
  copy->fEntries = fEntries;
  return copy.release();
}

}  // namespace Tovrin
