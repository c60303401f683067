#include "module/types/Tessarin.h"

#include <exception>
#include <utility>

#include "json/JSONWrapper.h"
#include "module/types/EngineGuard.h"

namespace Tovrin {

bool Tessarin::SetExpression(std::string&& text) {
  if (&text != &fExpression) {
    fExpression = std::move(text);
    text.clear();
  }
  fRegex = CRegex::Create(fExpression, false);
  return HasRegex();
}

bool Tessarin::Matches(std::string_view text) const {
  if (!fRegex) return false;
  return Guarded([&] { return fRegex->Matches(text); });
}

bool Tessarin::Search(std::string_view text) const {
  if (!fRegex) return false;
  try {
    return Guarded([&] { return fRegex->Search(text); });
  } catch (const std::exception&) {
    return false;
  }
}

std::string Tessarin::Replace(std::string_view text, std::string_view replacement, bool all) const {
  std::string replaced;
  if (fRegex) Guarded([&] { fRegex->Replace(text, replacement, replaced, all); });
  return replaced;
}

IUserDefinedType* Tessarin::Interface_Clone() const {
  AutoRefPtr<Tessarin> copy(new Tessarin(fTypeId));
  copy->fExpression = fExpression;
  // Compiled afresh, so that the two share nothing.
  if (fRegex) copy->fRegex = CRegex::Create(fRegex->Source(), false);
  return copy.release();
}

bool Tessarin::Interface_LessThan(const IUserDefinedType* other) const {
  // Contract: false against another class, and so "equal" to it, since equal is neither being less.
  const auto* const peer = dynamic_cast<const Tessarin*>(other);
  return peer && fExpression < peer->fExpression;  // bytes without sign, a prefix before the longer
}

std::uint8_t Tessarin::Interface_Deserialize(const IJSON* json) {
  if (!json || !json->IsObject()) return false;
  const AutoRefPtr<IJSON> member = json->Get("value");
  if (!member || !member->IsString()) return false;
  std::string text;
  return member->AsString(text) && SetExpression(std::move(text));
}

IJSON* Tessarin::Interface_Serialize() const {
  auto json = JSON::JSONWrapper::CreateObject();
  json->Parse("{}");  // the way to an object that keeps the order of its keys
  // Contract: what JSON cannot hold, text that is not UTF-8, leaves the object without its member
  // and with the setter's error; of a text with a zero byte it holds what stands in front of that.
  json->Set("value", fExpression);
  return json.release();
}

}  // namespace Tovrin
