#pragma once

#include <cstddef>
#include <string>

#include "host/Forward.h"
#include "host/IObject.h"

namespace Tovrin {

// The rule engine's frames, kept across an interruption so that a transaction can resume.
class TOVRIN_API ICallStack : public IObject {
public:
  bool IsResuming() const { return Interface_IsResuming(); }
  void EnterFrame(void* frame) { Interface_EnterFrame(frame); }
  void EnterFrame_WithName(void* frame, const char* name) {
    Interface_EnterFrame_WithName(frame, name);
  }
  void LeaveFrame() { Interface_LeaveFrame(); }
  void MarkFrameForExit() { Interface_MarkFrameForExit(); }
  void RegisterMemory(void* memory, std::size_t size) { Interface_RegisterMemory(memory, size); }
  std::string PrintCallStack(bool full) const {
    return TextOrEmpty(Interface_PrintCallStack(full));
  }

protected:
  ~ICallStack() = default;

private:  // Contract: the host calls these by position
  virtual bool Interface_IsResuming() const = 0;
  virtual void Interface_EnterFrame(void* frame) = 0;
  virtual void Interface_EnterFrame_WithName(void* frame, const char* name) = 0;
  virtual void Interface_LeaveFrame() = 0;
  virtual void Interface_MarkFrameForExit() = 0;
  virtual void Interface_RegisterMemory(void* memory, std::size_t size) = 0;
  virtual const char* Interface_PrintCallStack(bool full) const = 0;
};

}  // namespace Tovrin
