// What goes down into the variants of lists and maps, which may hold lists and maps again: taking
// apart, copying, printing, equality and order. Nesting may be deeper than any stack, so none of it
// recurses: what is still to be done is kept in a list, or, where no memory may be taken, in the
// values themselves.

#include <bit>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

namespace {

// Walks over the variants that one list or map holds, in their order.
class CInnerVariants {
public:
  explicit CInnerVariants(const CVariant& holder)
      : fElements(holder.Variants()), fEntries(holder.MapEntries()) {
    if (fEntries) fEntry = fEntries->begin();
  }

  // Null behind the last one.
  const CVariant* Next() {
    if (fEntries) {
      if (fEntry == fEntries->end()) return nullptr;
      fKey = fEntry->first.Get();
      ++fCount;
      return (fEntry++)->second.Get();
    }
    return fCount < fElements.size() ? &fElements[fCount++] : nullptr;
  }
  bool IsMap() const { return fEntries != nullptr; }
  // Of the one that Next gave.
  bool IsFirst() const { return fCount == 1; }
  const CStringImpl* Key() const { return fKey; }  // null in a list

private:
  std::span<const CVariant> fElements;
  const VariantMap* fEntries;
  VariantMap::const_iterator fEntry;
  const CStringImpl* fKey = nullptr;
  std::size_t fCount = 0;  // how many were given
};

using InnerPairs = std::vector<std::pair<CInnerVariants, CInnerVariants>>;

}  // namespace

bool CVariant::OwnsVariants() const {
  const ElementKind kind = KindOf(fType);
  return kind == ElementKind::Variant || kind == ElementKind::Map;
}

// ---- taking apart

// Leaves this, a list or map, without any variant in it. Takes no memory and throws nothing, for
// destructors run through here: while a value is being taken apart it needs no hash, so the field
// holds the way back to the value around it.
void CVariant::DestroyVariants() {
  CVariant* value = this;
  for (;;) {
    if (CVariant* inner = value->DestroyFlatVariants()) {
      inner->fHash.store(std::bit_cast<std::uintptr_t>(value), std::memory_order_relaxed);
      value = inner;
    } else if (value == this) {
      return;
    } else {
      value = std::bit_cast<CVariant*>(
          static_cast<std::uintptr_t>(value->fHash.load(std::memory_order_relaxed)));
    }
  }
}

// Destroys what this holds up to the first one that holds variants itself, and is no one else's;
// null when that was all.
CVariant* CVariant::DestroyFlatVariants() {
  const auto holdsVariants = [](const CVariant& value) {
    return value.OwnsVariants() && value.SizeOfList() != 0;
  };
  if (const VariantMap* entries = MapEntries()) {
    while (!entries->empty()) {
      CVariant* const value = entries->begin()->second.Get();
      if (holdsVariants(*value) && value->UseCount() == 1) return value;
      VariantMap& tree = *Elements<MapElement>()->fTree;
      tree.erase(tree.begin());
    }
    return nullptr;
  }
  for (std::size_t count = Variants().size(); count > 0; --count) {
    CVariant& last = Elements<VariantElement>()[count - 1];
    if (holdsVariants(last)) return &last;
    VariantElement::Destroy(last);
    fStorage.SetSize(fStorage.Size() - sizeof last);
  }
  return nullptr;
}

// ---- copying

void CVariant::CopyElements(const CVariant& source) {
  PendingCopies pending;
  CopyLevel(source, pending);
  while (!pending.empty()) {
    const auto [to, from] = pending.back();
    pending.pop_back();
    to->CopyLevel(*from, pending);
  }
}

// The variants in this value that hold variants themselves stay Empty, and are noted.
void CVariant::CopyVariants(const CVariant& source, PendingCopies& pending) {
  const auto copy = [&pending](CVariant& to, const CVariant& from) {
    if (from.OwnsVariants()) {
      pending.emplace_back(&to, &from);
    } else {
      to.CopyLevel(from, pending);
    }
  };
  for (const CVariant& element : source.Variants()) {
    auto* const to = new (fStorage.Data() + fStorage.Size()) CVariant;
    fStorage.SetSize(fStorage.Size() + sizeof *to);
    copy(*to, element);
  }
  if (const VariantMap* entries = source.MapEntries()) {
    MapElement::MakeNeutral(Elements<MapElement>());
    fStorage.SetSize(sizeof(MapHeader));
    MapHeader& header = *Elements<MapElement>();
    for (const auto& [key, value] : *entries) {
      const auto to =
          header.fTree->emplace_hint(header.fTree->end(), key, MakeUseCounted<CVariant>());
      header.fCount = header.fTree->size();
      copy(*to->second, *value);
    }
  }
}

// ---- text

void CVariant::AppendText(std::string_view separator, std::string& out) const {
  std::vector<CInnerVariants> open;  // lists and maps inside one another
  const CVariant* value = this;
  for (;;) {
    if (value->OwnsVariants()) {
      open.emplace_back(*value);
      if (open.back().IsMap()) out += '{';
    } else {
      value->AppendFlatText(separator, out);
    }
    for (;;) {
      if (open.empty()) return;
      value = open.back().Next();
      if (value) break;
      if (open.back().IsMap()) out += '}';
      open.pop_back();
    }
    if (!open.back().IsFirst()) out += separator;
    if (open.back().IsMap()) {
      out += Utf8Of(open.back().Key());
      out += ':';
    }
  }
}

// ---- equality and order

// Of two lists of variants, or maps, of the same type.
bool CVariant::AreVariantsEqual(const CVariant& other) const {
  InnerPairs open;
  const CVariant *left = this, *right = &other;
  for (;;) {
    if (left->OwnsVariants() && left->fType == right->fType) {
      if (left->SizeOfList() != right->SizeOfList()) return false;
      // A tree is equal to itself, whatever it holds.
      const bool isSameTree = left->fType == VariantType::Map && left == right;
      if (!isSameTree) open.emplace_back(CInnerVariants(*left), CInnerVariants(*right));
    } else if (!left->IsEqual(*right)) {
      return false;
    }
    for (;;) {
      if (open.empty()) return true;
      left = open.back().first.Next();
      right = open.back().second.Next();
      if (left) break;
      open.pop_back();
    }
    if (CompareHandles(open.back().first.Key(), open.back().second.Key()) != 0) return false;
  }
}

// Of two MixedLists. The first difference decides, then the length.
std::int32_t CVariant::CompareVariants(const CVariant& other) const {
  InnerPairs open;
  const CVariant *left = this, *right = &other;
  for (;;) {
    if (left->fType == VariantType::MixedList && right->fType == VariantType::MixedList) {
      open.emplace_back(CInnerVariants(*left), CInnerVariants(*right));
    } else if (const std::int32_t order = left->Compare(*right)) {
      return order;
    }
    for (;;) {
      if (open.empty()) return 0;
      left = open.back().first.Next();
      right = open.back().second.Next();
      if (left && right) break;
      if (left || right) return left ? 1 : -1;
      open.pop_back();
    }
  }
}
