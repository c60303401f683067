#pragma once

#include "host/Forward.h"
#include "host/IObject.h"

namespace Tovrin {

// Something that an IEventScheduler waits for.
class TOVRIN_API IEvent : public IObject {
public:
  bool HasError() const { return Interface_HasError(); }
  bool RemoveIfFired() { return Interface_RemoveIfFired(); }
  void* GetUserDefinedData() const { return Interface_GetUserDefinedData(); }

protected:
  ~IEvent() = default;

private:  // Contract: the host calls these by position
  virtual bool Interface_HasError() const = 0;
  virtual bool Interface_RemoveIfFired() = 0;
  virtual void* Interface_GetUserDefinedData() const = 0;
};

}  // namespace Tovrin
