#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CUseCounted.h"
#include "host/IUserDefinedType.h"
#include "host/InterfaceImpl.h"

class CVariant;

namespace Tovrin {

// The rule language's `Tessarin.List`: an ordered list of regular expressions that is asked as a
// whole whether any of them matches a text.
//
// Keeps every entry twice: as text, for order, display, search and saving; and as an element of one
// RegexList value, which builds and owns the matcher when it is first asked to match. The text of
// an entry is what the matcher reads: "regex(...)" is an expression, any other text a wildcard. Who
// adds an entry says where anchors go, see AnchoredEntry.
//
// Owned by whoever holds references. Any number of threads may read and match; adding an entry
// while another thread does is the caller's risk.
class TessarinList final : public InterfaceImpl<IUserDefinedType> {
public:
  // Empty. The id is the host's, and only handed back by GetType.
  explicit TessarinList(TypeId typeId);
  ~TessarinList() override;

  // The entry that an expression of a Tessarin becomes: it matches whole texts.
  static std::string AnchoredEntry(std::string_view expression);

  // Contract: the matcher's side takes the text up to its first zero byte, the other side all of
  // it.
  void AddEntry(const std::string& text);

  // False without asking the matcher when there are no entries; false too when an entry does not
  // compile, for then the list cannot be used. An engine failure leaves as std::runtime_error.
  bool Matches(std::string_view text) const;

  std::size_t Size() const { return fEntries.size(); }
  // The stored text; empty when the index is out of range.
  const std::string& Text(std::uint64_t index) const;
  const std::vector<std::string>& Entries() const { return fEntries; }

private:
  const char* Interface_GetName() const override { return "Tessarin.List"; }
  IUserDefinedType* Interface_Clone() const override;
  TypeId Interface_GetType() const override { return fTypeId; }
  // Contract: no list is less than anything, so every list is equal to every user-defined value.
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
  // {"type":"Tessarin.List","entries":[{"value":"..."},...]}. Contract: texts are written as they
  // are, without escapes, and come back as expressions, "regex(...)" around a second time.
  std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context) override;
  IJSON* Interface_Serialize() const override;
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  bool ReadEntries(const IJSON& entries);  // false when one of them is none
  bool BuildsMatcher() const;

  const TypeId fTypeId;
  CUsePtr<CVariant> fRegexes;         // a RegexList; element i is entry i
  std::vector<std::string> fEntries;  // the texts as stored
};

}  // namespace Tovrin
