#include "tests/support/HostValues.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <utility>

using namespace Tovrin;

AutoRefPtr<TestVariant> TestVariant::Boolean(bool value) {
  AutoRefPtr<TestVariant> variant(new TestVariant(kTypeBoolean));
  variant->fBoolean = value;
  return variant;
}

AutoRefPtr<TestVariant> TestVariant::Number(double value) {
  AutoRefPtr<TestVariant> variant(new TestVariant(kTypeNumber));
  variant->fNumber = value;
  return variant;
}

AutoRefPtr<TestVariant> TestVariant::Text(std::string_view text) {
  AutoRefPtr<TestVariant> variant(new TestVariant(kTypeString));
  variant->fText = std::make_unique<std::string>(text);
  return variant;
}

AutoRefPtr<TestVariant> TestVariant::Data(const AutoRefPtr<IDataRef>& data) {
  AutoRefPtr<TestVariant> variant(new TestVariant(kTypeDataRef));
  variant->fData = data;
  return variant;
}

AutoRefPtr<TestVariant> TestVariant::Object(TypeId type,
                                            const AutoRefPtr<IUserDefinedType>& object) {
  AutoRefPtr<TestVariant> variant(new TestVariant(type));
  variant->fObject = object;
  return variant;
}

AutoRefPtr<TestVariant> TestVariant::Vector(TypeId type,
                                            const AutoRefPtr<const IVectorGeneric>& vector) {
  AutoRefPtr<TestVariant> variant(new TestVariant(type));
  variant->fVector = vector;
  return variant;
}

void TestVariant::Pass() const {
  CHostFaults::Pass();
  if (!fIsLent) return;
  auto text = std::make_unique<std::string>(*fText);
  std::ranges::fill(*fText, '~');
  fSpoilt = std::exchange(fText, std::move(text));
  fIsLent = false;
}

void TestVariant::CountRead() const {
  Pass();
  ++fReads;
}

TypeId TestVariant::Interface_GetType() const {
  CountRead();
  return fType;
}

bool TestVariant::Interface_GetBoolean() const {
  CountRead();
  return fBoolean;
}

double TestVariant::Interface_GetNumber() const {
  CountRead();
  return fNumber;
}

const char* TestVariant::Interface_GetString() const {
  CountRead();
  fIsLent = fText != nullptr;
  return fText ? fText->c_str() : nullptr;
}

std::size_t TestVariant::Interface_GetStringSize() const {
  CountRead();
  if (fClaimedSize) return *fClaimedSize;
  return fText ? fText->size() : 0;
}

IDataRef* TestVariant::Interface_GetData() const {
  CountRead();
  return Share(fData.get()).release();
}

IStream* TestVariant::Interface_GetStream() const {
  CountRead();
  return Share(fStream.get()).release();
}

IUserDefinedType* TestVariant::Interface_GetUserDefined() const {
  CountRead();
  return Share(fObject.get()).release();
}

std::size_t TestVariant::Interface_GetVectorSize() const {
  CountRead();
  return fVector ? fVector->GetSize() : 0;
}

const IVectorGeneric* TestVariant::Interface_GetVector() const {
  CountRead();
  return Share(fVector.get()).release();
}

std::size_t TestVariant::Interface_GetMapSize() const {
  CountRead();
  return fMap ? fMap->GetSize() : 0;
}

const IMapGeneric* TestVariant::Interface_GetMap() const {
  CountRead();
  return Share(fMap.get()).release();
}

std::uint8_t TestVariant::Interface_IsEqual(const IVariant* other) const {
  return other == this ? 1 : 0;
}

void TestVariant::Interface_Assign(const IVariant*) {
  Pass();
  fChanges.emplace_back("Assign");
}

void TestVariant::Interface_AssignBoolean(bool value) {
  Pass();
  fBoolean = value;
  fChanges.emplace_back(value ? "AssignBoolean true" : "AssignBoolean false");
}

void TestVariant::Interface_AssignNumber(double value) {
  Pass();
  fNumber = value;
  std::ostringstream line;
  line << "AssignNumber " << value;
  fChanges.push_back(line.str());
}

void TestVariant::Interface_AssignString(const char* bytes, std::size_t size) {
  Pass();
  if (bytes) {
    fText = std::make_unique<std::string>(bytes, size);
    fChanges.push_back("AssignString '" + *fText + "'");
  } else {
    fText.reset();
    fChanges.push_back("AssignString null " + std::to_string(size));
  }
}

void TestVariant::Interface_AssignData(IDataRef* data) {
  Pass();
  fData = Share(data);
  fChanges.emplace_back("AssignData");
}

void TestVariant::Interface_AssignStream(IStream* stream) {
  Pass();
  fStream = Share(stream);
  fChanges.emplace_back("AssignStream");
}

void TestVariant::Interface_SetUserDefined(IUserDefinedType* object) {
  Pass();
  fObject = Share(object);
  fChanges.emplace_back(object ? "SetUserDefined" : "SetUserDefined null");
}

void TestVariant::Interface_AssignVector(const IVectorGeneric* vector) {
  Pass();
  fVector = Share(vector);
  fChanges.emplace_back(vector ? "AssignVector" : "AssignVector null");
}

void TestVariant::Interface_AssignMap(const IMapGeneric* map) {
  Pass();
  fMap = Share(map);
  fChanges.emplace_back(map ? "AssignMap" : "AssignMap null");
}

AutoRefPtr<const IVectorGeneric> TestVector::Texts(const std::vector<std::string>& texts) {
  Elements elements;
  for (const std::string& text : texts) {
    elements.emplace_back(TestVariant::Text(text).release());
  }
  return AutoRefPtr<const IVectorGeneric>(new TestVector(kTypeString, std::move(elements)));
}

IVariant* TestVector::Interface_Get(std::size_t index) const {
  CHostFaults::Pass();
  return index < fElements.size() ? Share(fElements[index].get()).release() : nullptr;
}

const IVectorGeneric* TestVector::Interface_Append(IVariant* element) const {
  CHostFaults::Pass();
  Elements longer = fElements;
  longer.push_back(Share(element));
  return new TestVector(fElementType, std::move(longer));
}

IVariant* TestMap::Interface_GetKeyAt(std::size_t index) const {
  return index < fPairs.size() ? Share(fPairs[index].first.get()).release() : nullptr;
}

IVariant* TestMap::Interface_GetValueAt(std::size_t index) const {
  return index < fPairs.size() ? Share(fPairs[index].second.get()).release() : nullptr;
}

const IMapGeneric* TestMap::Interface_Insert(IVariant* key, IVariant* value) const {
  Pairs pairs = fPairs;
  pairs.emplace_back(Share(key), Share(value));
  return new TestMap(fKeyType, fValueType, std::move(pairs));
}

std::vector<std::string> TextsOf(const AutoRefPtr<const IVectorGeneric>& vector) {
  std::vector<std::string> texts;
  const std::size_t size = vector ? vector->GetSize() : 0;
  for (std::size_t index = 0; index < size; ++index) {
    const auto element = vector->Get(index);
    const std::size_t length = element ? element->GetStringSize() : 0;
    const char* const bytes = element ? element->GetString() : nullptr;
    texts.push_back(bytes ? std::string(bytes, length) : "(null)");
  }
  return texts;
}
