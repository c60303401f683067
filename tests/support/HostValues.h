#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/AutoRefPtr.h"
#include "host/IDataRef.h"
#include "host/IMapGeneric.h"
#include "host/IStream.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"
#include "host/InterfaceImpl.h"

// The host's values for tests. One thread at a time may use one of them, as in a transaction.

// What a host's callback throws when its turn has come.
class HostFault : public std::exception {};

// Lets a host fail: once armed, the callbacks of these values and of those in HostContext.h are
// counted, and the one at that place throws a HostFault. References are never refused. For one
// thread.
class CHostFaults {
public:
  static void Arm(std::int64_t place) { fPlace = place; }  // 0: the very next
  static void Disarm() { fPlace = -1; }
  static void Pass() {
    if (fPlace >= 0 && fPlace-- == 0) throw HostFault();
  }

private:
  static inline std::int64_t fPlace = -1;  // callbacks to go; negative when disarmed
};

// A variant that a test fills, and that tells what the module did with it.
//
// Invariant: the module sees only what its factory set and what was assigned since; a getter of
// another type answers nothing. The bytes that it lends are spoilt when anything is done with it:
// they hold until the next call, and no longer.
class TestVariant final : public Tovrin::InterfaceImpl<Tovrin::IVariant> {
public:
  explicit TestVariant(Tovrin::TypeId type) : fType(type) {}

  static Tovrin::AutoRefPtr<TestVariant> Boolean(bool value);
  static Tovrin::AutoRefPtr<TestVariant> Number(double value);
  static Tovrin::AutoRefPtr<TestVariant> Text(std::string_view text);
  static Tovrin::AutoRefPtr<TestVariant> Data(const Tovrin::AutoRefPtr<Tovrin::IDataRef>& data);
  // A user-defined value; its object may be missing.
  static Tovrin::AutoRefPtr<TestVariant> Object(
      Tovrin::TypeId type, const Tovrin::AutoRefPtr<Tovrin::IUserDefinedType>& object);
  static Tovrin::AutoRefPtr<TestVariant> Vector(
      Tovrin::TypeId type, const Tovrin::AutoRefPtr<const Tovrin::IVectorGeneric>& vector);

  // Tells of another size of its text than it has.
  void ClaimSize(std::size_t size) { fClaimedSize = size; }

  // The changes in order, each as the operation's name and what it brought: "AssignBoolean false",
  // "AssignNumber 7", "AssignString null 0", "AssignString 'text'", "AssignVector null".
  const std::vector<std::string>& Changes() const { return fChanges; }
  // How often anything but the references was asked of it.
  std::size_t Reads() const { return fReads; }

private:
  Tovrin::TypeId Interface_GetType() const override;
  const char* Interface_GetTypeAsString(Tovrin::IContext*) const override { return nullptr; }
  bool Interface_GetBoolean() const override;
  double Interface_GetNumber() const override;
  const char* Interface_GetString() const override;
  std::size_t Interface_GetStringSize() const override;
  Tovrin::IDataRef* Interface_GetData() const override;
  Tovrin::IStream* Interface_GetStream() const override;
  Tovrin::IUserDefinedType* Interface_GetUserDefined() const override;
  std::size_t Interface_GetVectorSize() const override;
  const Tovrin::IVectorGeneric* Interface_GetVector() const override;
  std::size_t Interface_GetMapSize() const override;
  const Tovrin::IMapGeneric* Interface_GetMap() const override;
  std::uint8_t Interface_IsEqual(const Tovrin::IVariant* other) const override;
  void Interface_Assign(const Tovrin::IVariant*) override;
  void Interface_AssignBoolean(bool value) override;
  void Interface_AssignNumber(double value) override;
  void Interface_AssignString(const char* bytes, std::size_t size) override;
  void Interface_AssignData(Tovrin::IDataRef* data) override;
  void Interface_AssignStream(Tovrin::IStream* stream) override;
  void Interface_SetUserDefined(Tovrin::IUserDefinedType* object) override;
  void Interface_AssignVector(const Tovrin::IVectorGeneric* vector) override;
  void Interface_AssignMap(const Tovrin::IMapGeneric* map) override;
  Tovrin::IVariant* Interface_Clone() const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*) override { return 0; }
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override { return nullptr; }

  void Pass() const;       // what every callback begins with
  void CountRead() const;  // and every question

  const Tovrin::TypeId fType;
  bool fBoolean = false;
  double fNumber = 0;
  std::optional<std::size_t> fClaimedSize;
  Tovrin::AutoRefPtr<Tovrin::IDataRef> fData;
  Tovrin::AutoRefPtr<Tovrin::IStream> fStream;
  Tovrin::AutoRefPtr<Tovrin::IUserDefinedType> fObject;
  Tovrin::AutoRefPtr<const Tovrin::IVectorGeneric> fVector;
  Tovrin::AutoRefPtr<const Tovrin::IMapGeneric> fMap;

  // The text moves on to bytes of its own when those that it had are lent.
  mutable std::unique_ptr<std::string> fText;  // may be null
  mutable std::unique_ptr<std::string> fSpoilt;
  mutable bool fIsLent = false;

  std::vector<std::string> fChanges;
  mutable std::size_t fReads = 0;
};

// A vector that never changes: an append gives a new one, so whoever goes on with the old loses
// pieces.
class TestVector final : public Tovrin::InterfaceImpl<Tovrin::IVectorGeneric> {
public:
  using Elements = std::vector<Tovrin::AutoRefPtr<Tovrin::IVariant>>;  // may hold nulls

  TestVector(Tovrin::TypeId elementType, Elements elements)
      : fElementType(elementType), fElements(std::move(elements)) {}

  static Tovrin::AutoRefPtr<const Tovrin::IVectorGeneric> Texts(
      const std::vector<std::string>& texts);

private:
  std::size_t Interface_GetSize() const override { return fElements.size(); }
  Tovrin::TypeId Interface_GetElementType() const override { return fElementType; }
  Tovrin::IVariant* Interface_Get(std::size_t index) const override;
  const Tovrin::IVectorGeneric* Interface_Append(Tovrin::IVariant* element) const override;
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*,
                                     const Tovrin::IVectorGeneric**) const override {
    return 0;
  }

  const Tovrin::TypeId fElementType;
  const Elements fElements;
};

// A map that never changes: an insert gives a new one, as with TestVector.
class TestMap final : public Tovrin::InterfaceImpl<Tovrin::IMapGeneric> {
public:
  using Reference = Tovrin::AutoRefPtr<Tovrin::IVariant>;
  using Pairs = std::vector<std::pair<Reference, Reference>>;  // may hold nulls

  TestMap(Tovrin::TypeId keyType, Tovrin::TypeId valueType, Pairs pairs)
      : fKeyType(keyType), fValueType(valueType), fPairs(std::move(pairs)) {}

private:
  Tovrin::TypeId Interface_GetKeyType() const override { return fKeyType; }
  Tovrin::TypeId Interface_GetMappedValueType() const override { return fValueType; }
  std::size_t Interface_GetSize() const override { return fPairs.size(); }
  Tovrin::IVariant* Interface_GetKeyAt(std::size_t index) const override;
  Tovrin::IVariant* Interface_GetValueAt(std::size_t index) const override;
  const Tovrin::IMapGeneric* Interface_Insert(Tovrin::IVariant* key,
                                              Tovrin::IVariant* value) const override;
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*,
                                     const Tovrin::IMapGeneric**) const override {
    return 0;
  }

  const Tovrin::TypeId fKeyType;
  const Tovrin::TypeId fValueType;
  const Pairs fPairs;
};

// A vector that takes so many elements, and then gives nothing to go on with.
class FadingVector final : public Tovrin::InterfaceImpl<Tovrin::IVectorGeneric> {
public:
  explicit FadingVector(int rest) : fRest(rest) {}

private:
  std::size_t Interface_GetSize() const override { return 0; }
  Tovrin::TypeId Interface_GetElementType() const override { return Tovrin::kTypeString; }
  Tovrin::IVariant* Interface_Get(std::size_t) const override { return nullptr; }
  const Tovrin::IVectorGeneric* Interface_Append(Tovrin::IVariant*) const override {
    return fRest > 0 ? new FadingVector(fRest - 1) : nullptr;
  }
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*,
                                     const Tovrin::IVectorGeneric**) const override {
    return 0;
  }

  const int fRest;
};

// The same as a map.
class FadingMap final : public Tovrin::InterfaceImpl<Tovrin::IMapGeneric> {
public:
  explicit FadingMap(int rest) : fRest(rest) {}

private:
  Tovrin::TypeId Interface_GetKeyType() const override { return Tovrin::kTypeNumber; }
  Tovrin::TypeId Interface_GetMappedValueType() const override { return Tovrin::kTypeString; }
  std::size_t Interface_GetSize() const override { return 0; }
  Tovrin::IVariant* Interface_GetKeyAt(std::size_t) const override { return nullptr; }
  Tovrin::IVariant* Interface_GetValueAt(std::size_t) const override { return nullptr; }
  const Tovrin::IMapGeneric* Interface_Insert(Tovrin::IVariant*, Tovrin::IVariant*) const override {
    return fRest > 0 ? new FadingMap(fRest - 1) : nullptr;
  }
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext*) const override { return nullptr; }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON*, Tovrin::IContext*,
                                     const Tovrin::IMapGeneric**) const override {
    return 0;
  }

  const int fRest;
};

// A stream at its end that never had a byte.
class SilentStream final : public Tovrin::InterfaceImpl<Tovrin::IStream> {
  std::size_t Interface_GetCurrentSize() const override { return 0; }
  std::size_t Interface_Read(void*, std::size_t, std::size_t) const override { return 0; }
  void Interface_DiscardBefore(std::size_t) override {}
  bool Interface_IsFinished() const override { return true; }
  bool Interface_NeedMoreData(Tovrin::IContext*, std::size_t) override { return false; }
};

// The texts of a VECTOR<STRING>; none of an empty reference. A null element counts as "(null)".
std::vector<std::string> TextsOf(const Tovrin::AutoRefPtr<const Tovrin::IVectorGeneric>& vector);
