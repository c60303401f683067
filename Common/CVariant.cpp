#include "Common/CVariant.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"
#include "Common/DebugLog.h"

qxSource("Common\\CVariant");

VariantType TypeByName(std::string_view name) {
  if (name == "Number") return VariantType::Long;
  const auto row = std::ranges::find(kVariantTypeTable, name, &CVariantTypeInfo::fName);
  return row == kVariantTypeTable.end() ? VariantType::Empty : row->fType;
}

// ---- construction

CVariant::CVariant(VariantType type) {
  if (!IsKnownType(type)) {
    qxReport(ErrorId::UnknownType, "CVariant::CVariant",
             {{"onPosition", "CVariant: Constructor"},
              {"typeName", PrintedTypeName(type)},
              {"objName", "Variant"},
              {"reason", "Type not handled by CVariant."}});
    return;
  }
  SetType(type);
}

CVariant::CVariant(double value) {
  SetDouble(value);
}

CVariant::CVariant(std::int64_t value) {
  SetLong(value);
}

CVariant::CVariant(bool value) {
  SetBool(value);
}

CVariant::CVariant(CStringImpl* text) {
  SetString(text);
}

CVariant::CVariant(VariantType type, std::int64_t value) {
  if (!TypeFamily::IntegerScalars.Has(type)) {
    qxDebugPrint(1, "CVariant::CVariant", "Wrong type for Long!");
    return;
  }
  SetLong(type, value);
}

CVariant::CVariant(const CVariant& other) : CVariant() {
  CopyElements(other);
}

CVariant::CVariant(CVariant&& source) noexcept {
  TakeFrom(source);
  fRegexHolder = source.fRegexHolder.exchange(nullptr);
  fLookupCount = source.fLookupCount.load(std::memory_order_relaxed);
  source.fFrozen = true;
}

CVariant& CVariant::operator=(const CVariant& other) {
  CopyFrom(other);
  return *this;
}

CVariant::~CVariant() {
  DestroyElements();
  DropCaches();
}

// ---- storage

bool CVariant::ResizeForNewValue(std::uint64_t size) {
  if (fFrozen) return false;
  DestroyElements();
  DropCaches();
  const VariantType type = std::exchange(fType, VariantType::Empty);  // and so if memory fails
  fStorage.ResizeForNewValue(size);
  fType = type;
  return true;
}

void CVariant::DestroyElements() {
  if (OwnsVariants()) DestroyVariants();
  if (TypeInfo(fType).fOwnsObjects) {
    VisitElements(KindOf(fType), [this](auto element) {
      using E = decltype(element);
      const std::uint64_t count = std::as_const(*this).Elements<E>().size();
      for (std::uint64_t i = 0; i < count; ++i) E::Destroy(Elements<E>()[i]);
    });
  }
  fStorage.SetSize(0);
}

// A writer has no reader beside it, so nothing is published here.
void CVariant::DeleteIndex() {
  delete[] fIndex.load(std::memory_order_relaxed);
  fIndex.store(nullptr, std::memory_order_relaxed);
}

void CVariant::SetNeutral(VariantType type) {
  VisitElements(KindOf(type), [&](auto kind) {
    NewElement<decltype(kind)> element;
    SetElement(type, element);
  });
}

void CVariant::CopyFrom(const CVariant& source) {
  if (this == &source || fFrozen) return;
  // Either side may be, or may hold, an element of the other.
  if (OwnsVariants() || source.OwnsVariants()) {
    CVariant copy(source);
    TakeFrom(copy);
  } else {
    CopyElements(source);
  }
}

void CVariant::CopyLevel(const CVariant& source, PendingCopies& pending) {
  const std::uint64_t size = source.fStorage.Size();
  std::unique_ptr<std::uint64_t[]> index;
  if (const std::uint64_t* other = source.fIndex.load(std::memory_order_acquire)) {
    const std::uint64_t count = source.SizeOfList();
    index = std::make_unique<std::uint64_t[]>(count);
    std::copy_n(other, count, index.get());
  }

  ResizeForNewValue(size);
  fStorage.SetSize(0);  // until the elements are there, one by one
  fType = source.fType;
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (!E::kOwnsObjects) {
      std::memcpy(fStorage.Data(), source.fStorage.Data(), size);
      fStorage.SetSize(size);
    } else if constexpr (requires(typename E::Stored * to) { E::Copy(to, *to); }) {
      auto* to = Elements<E>();
      for (const auto& element : source.Elements<E>()) {
        E::Copy(to++, element);
        fStorage.SetSize(fStorage.Size() + sizeof element);
      }
    } else {
      CopyVariants(source, pending);
    }
  });
  fSorted = source.fSorted;
  fHash.store(source.fHash.load(std::memory_order_relaxed), std::memory_order_relaxed);
  fIndex.store(index.release(), std::memory_order_relaxed);
}

void CVariant::TakeFrom(CVariant& source) {
  DestroyElements();
  DropCaches();
  fStorage.TakeFrom(source.fStorage);
  fType = std::exchange(source.fType, VariantType::Empty);
  fSorted = std::exchange(source.fSorted, false);
  fIndex = source.fIndex.exchange(nullptr);
  fHash = source.fHash.exchange(0);
}

void CVariant::Swap(CVariant& other) {
  qzvector<char> held;
  held.TakeFrom(fStorage);
  fStorage.TakeFrom(other.fStorage);
  other.fStorage.TakeFrom(held);
  std::swap(fType, other.fType);
  std::swap(fSorted, other.fSorted);
  fIndex = other.fIndex.exchange(fIndex.load(std::memory_order_relaxed));
}

// ---- the value as a whole

void CVariant::Assign(const IVariant* source) {
  if (!source) return;
  const CVariantReader reader(*source);
  if (reader.Peer()) {
    CopyFrom(*reader.Peer());
  } else if (!fFrozen) {
    CVariant copy;  // the source may be a view of something that this variant owns
    CForeignAllowance allowance;
    copy.ReadThroughInterface(*source, allowance);
    TakeFrom(copy);
  }
}

// Makes this, an Empty variant, what was found inside of a foreign one.
void CVariant::ReadForeign(const IVariant& source, CForeignAllowance& allowance) {
  if (const CVariant* peer = PeerOf(&source)) {
    CopyFrom(*peer);
  } else {
    ReadThroughInterface(source, allowance);
  }
}

// Makes this, an Empty variant, what a foreign one says it is.
void CVariant::ReadThroughInterface(const IVariant& source, CForeignAllowance& allowance) {
  const CVariantReader reader(source, allowance);
  const VariantType type = reader.Type();
  if (type == VariantType::Empty || !IsKnownType(type)) return;

  if (type == VariantType::Double) {
    SetDouble(source.GetDouble());
  } else if (type == VariantType::Boolean) {
    SetBool(source.GetBool());
  } else if (TypeFamily::IntegerScalars.Has(type)) {
    SetLong(type, source.GetLong());
  } else if (TypeFamily::TextScalars.Has(type)) {
    SetString(type, reader.Text().Get());
  } else {
    SetType(type);
    if (!allowance.EnterLevel()) return;
    if (type == VariantType::Map) {
      ReadMapThroughInterface(source, allowance);
    } else {
      AddElementsOf(reader);
      fSorted = source.IsSorted();  // Contract: the flag is copied, and nothing is sorted
    }
    allowance.LeaveLevel();
  }
}

Selvane::IVariant* CVariant::Clone() const {
  return new CVariant(*this);
}

void CVariant::SetType(VariantType type) {
  if (fType != VariantType::Empty || fFrozen) return;
  if (type == VariantType::Empty || !IsKnownType(type)) return;
  if (TypeInfo(type).fIsList) {
    fType = type;
  } else {
    SetNeutral(type);
  }
}

void CVariant::Clear() {
  if (fType == VariantType::Empty) return;
  if (TypeInfo(fType).fIsList) {
    ResizeForNewValue(0);
    fSorted = false;
  } else {
    SetNeutral(fType);
  }
}

void CVariant::SetEmpty() {
  if (!ResizeForNewValue(0)) return;
  fType = VariantType::Empty;
  fSorted = false;
}
