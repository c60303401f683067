#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IJSON.h"
#include "host/IObject.h"

namespace Tovrin {

// A structured key of counters and telemetry.
class TOVRIN_API IHash : public IObject {
public:
  AutoRefPtr<IHash> Clone() const { return AutoRefPtr<IHash>(Interface_Clone()); }
  bool LessThan(const IHash* other) const { return Interface_LessThan(other); }
  bool Deserialize(const IJSON* json, IContext* context) {
    return Interface_Deserialize(json, context) != 0;
  }
  bool Deserialize(const IJSON* json) { return Interface_Deserialize(json) != 0; }
  AutoRefPtr<IJSON> Serialize(IContext* context) const {
    return AutoRefPtr<IJSON>(Interface_Serialize(context));
  }
  AutoRefPtr<IJSON> Serialize() const { return AutoRefPtr<IJSON>(Interface_Serialize()); }

  bool IsEqual(const IHash* other) const {
    return other && !other->LessThan(this) && !LessThan(other);
  }
  // The text before is gone in any case, also where the serialising throws.
  void ToString(std::string& text, IContext* context) const {
    text.clear();
    text = CompactTextOf(Serialize(context));
  }
  void ToString(std::string& text) const {
    text.clear();
    text = CompactTextOf(Serialize());
  }
  std::size_t ToStringSize(IContext* context) const {
    return CompactTextOf(Serialize(context)).size();
  }
  std::size_t ToStringSize() const { return CompactTextOf(Serialize()).size(); }

protected:
  ~IHash() = default;

private:  // Contract: the host calls these by position
  virtual IHash* Interface_Clone() const = 0;
  virtual bool Interface_LessThan(const IHash* other) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context) = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json) = 0;
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
  virtual IJSON* Interface_Serialize() const = 0;
};

}  // namespace Tovrin
