#pragma once

#include <cstddef>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"

namespace Tovrin {

// Bytes that arrive over time; offsets count from the first byte that ever arrived.
class TOVRIN_API IStream : public IObject {
public:
  std::size_t GetCurrentSize() const { return Interface_GetCurrentSize(); }
  std::size_t Read(void* buffer, std::size_t size, std::size_t offset) const {
    return Interface_Read(buffer, size, offset);
  }
  void DiscardBefore(std::size_t offset) { Interface_DiscardBefore(offset); }
  bool IsFinished() const { return Interface_IsFinished(); }
  bool NeedMoreData(const AutoRefPtr<IContext>& context, std::size_t size) {
    return Interface_NeedMoreData(context.get(), size);
  }

  // Contract: true for two DIFFERENT objects. Every caller depends on this sense.
  bool IsEqual(const IStream* other) const { return this != other; }

protected:
  ~IStream() = default;

private:  // Contract: the host calls these by position
  virtual std::size_t Interface_GetCurrentSize() const = 0;
  virtual std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const = 0;
  virtual void Interface_DiscardBefore(std::size_t offset) = 0;
  virtual bool Interface_IsFinished() const = 0;
  virtual bool Interface_NeedMoreData(IContext* context, std::size_t size) = 0;
};

}  // namespace Tovrin
