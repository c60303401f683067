#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "host/IUserDefinedType.h"
#include "host/InterfaceImpl.h"

namespace Tovrin {

// The rule language's `Tessarin`: one regular expression, as its text and compiled.
//
// An expression that does not compile is a legal value: it matches nothing, and keeps its text for
// display and for saving. Two values are equal exactly when their texts are, compiled or not.
//
// Owned by whoever holds references. The value is set once, by SetExpression on a fresh object;
// after that any number of threads may read it, for there is no lock.
//
// Invariant: the compiled expression is empty, or made by CRegex::Create from the text as no
// wildcard.
class Tessarin final : public InterfaceImpl<IUserDefinedType> {
public:
  // No text and nothing compiled. The id is the host's, and only handed back by GetType.
  explicit Tessarin(TypeId typeId) : fTypeId(typeId) {}

  // Moves the text in and compiles it; the given text is empty afterwards, unless it is this
  // object's own. True when it compiled; why it did not stands in the debug log.
  bool SetExpression(std::string&& text);

  const std::string& Expression() const { return fExpression; }
  // What SetExpression compiled; empty where there is nothing.
  const CRegexPtr& Regex() const { return fRegex; }
  bool HasRegex() const { return static_cast<bool>(fRegex); }

  // Without a compiled expression: false, false, and the empty text.
  // An engine failure leaves Matches and Replace as std::runtime_error.
  bool Matches(std::string_view text) const;
  // Contract: the one matching call that a failure of the engine never leaves; it answers false.
  bool Search(std::string_view text) const;
  // Contract: the empty text without a compiled expression, not the text as given.
  std::string Replace(std::string_view text, std::string_view replacement, bool all) const;

private:
  const char* Interface_GetName() const override { return "Tessarin"; }
  IUserDefinedType* Interface_Clone() const override;
  TypeId Interface_GetType() const override { return fTypeId; }
  bool Interface_LessThan(const IUserDefinedType* other) const override;
  // {"value":"..."}. Contract: a member that is no valid expression makes false, and yet becomes
  // the text, with nothing compiled.
  std::uint8_t Interface_Deserialize(const IJSON* json) override;
  IJSON* Interface_Serialize() const override;
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }

  const TypeId fTypeId;
  std::string fExpression;  // exactly as given
  CRegexPtr fRegex;
};

}  // namespace Tovrin
