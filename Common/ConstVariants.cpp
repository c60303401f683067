#include "Common/ConstVariants.h"

#include "Common/CVariant.h"
#include "Common/CVariantReports.h"

qxSource("Common\\ConstVariants");

namespace {

constinit CStaticConstBoolVariant kTrue(true);
constinit CStaticConstBoolVariant kFalse(false);
constinit CStaticConstLongVariant kZero(0);
constinit CStaticConstLongVariant kMinusOne(-1);
constinit CStaticConstEmptyStringVariant kEmptyString;

// The constant as a variant that has all operations.
CVariant CopyOf(const Selvane::IVariant& constant) {
  CVariant copy;
  copy.Assign(&constant);
  return copy;
}

}  // namespace

// ---- AEmptyVariant

Selvane::IVariant* AEmptyVariant::Clone() const {
  return new CVariant(CopyOf(*this));
}

bool AEmptyVariant::IsEqual(const IVariant* other) const {
  return CopyOf(*this).IsEqual(other);
}

std::int32_t AEmptyVariant::Compare(const IVariant* other) const {
  return CopyOf(*this).Compare(other);
}

bool AEmptyVariant::CanHoldValueOf(const IVariant* other) const {
  return CopyOf(*this).CanHoldValueOf(other);
}

Selvane::IUnicodeString* AEmptyVariant::ToString(Selvane::IUnicodeString*) const {
  return NewUnicodeString(nullptr);
}

std::uint64_t AEmptyVariant::GetHash() const {
  return CopyOf(*this).GetHash();
}

// ---- the constants

bool CStaticConstBoolVariant::IsEqual(const IVariant* other) const {
  if (!other) {
    qxReport(
        ErrorId::ObjNotInitialized, "CStaticConstBoolVariant::IFIsEqual",
        NotInitialized("CStaticConstBoolVariant: eq", "right hand side of operator 'equals'."));
    return false;
  }
  if (other->GetType() != VariantType::Boolean) {
    qxReport(ErrorId::ErrorDuringOperation, "CStaticConstBoolVariant::IFIsEqual",
             FailedOperation("CStaticConstBoolVariant: eq", "operator 'equals' of Variant",
                             UnsupportedTypes(GetType(), other->GetType())));
    return false;
  }
  return other->GetBool() == fValue;
}

Selvane::IUnicodeString* CStaticConstBoolVariant::ToString(Selvane::IUnicodeString*) const {
  return NewUnicodeString(MakeText(fValue ? "true" : "false"));
}

Selvane::IUnicodeString* CStaticConstLongVariant::ToString(Selvane::IUnicodeString*) const {
  std::string digits;
  PrintInteger(GetType(), fValue, digits);
  return NewUnicodeString(MakeText(digits));
}

Selvane::IUnicodeString* CStaticConstEmptyStringVariant::GetString() const {
  return NewUnicodeString(nullptr);
}

// ---- who hands them out

Selvane::IVariant* MakeConstBool(bool value) {
  return value ? &kTrue : &kFalse;
}

Selvane::IVariant* MakeConstLong(std::int64_t value) {
  if (value == 0) return &kZero;
  if (value == -1) return &kMinusOne;
  return new CVariant(value);
}

Selvane::IVariant* MakeConstEmptyString() {
  return &kEmptyString;
}

void MakeConstBool(bool value, CUsePtr<Selvane::IVariant>& target) {
  target.Reset();
  target = CUsePtr<Selvane::IVariant>(MakeConstBool(value));
}

void MakeConstLong(std::int64_t value, CUsePtr<Selvane::IVariant>& target) {
  target.Reset();
  target = CUsePtr<Selvane::IVariant>(MakeConstLong(value));
}

void MakeConstEmptyString(CUsePtr<Selvane::IVariant>& target) {
  target.Reset();
  target = CUsePtr<Selvane::IVariant>(MakeConstEmptyString());
}
