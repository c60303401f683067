#pragma once

#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/ICounter.h"
#include "host/IJSON.h"

namespace Tovrin {

// The host's named set of counters and value holders, and what is registered in it. Its table
// begins with all of ICounter's slots.
class TOVRIN_API ITelemetry : public ICounter {
public:
  void Clear() { Interface_Clear(); }
  bool RegisterValueHolder(const char* name) { return Interface_RegisterValueHolder(name); }
  bool RegisterCounter(const char* name) { return Interface_RegisterCounter(name); }
  bool Register(const char* name) { return Interface_Register(name); }
  bool RegisterMatching(const char* pattern) { return Interface_RegisterMatching(pattern); }
  bool RegisterModule(const char* module) { return Interface_RegisterModule(module); }
  bool IsRegistered(const char* name) const { return Interface_IsRegistered(name); }
  bool IsRegisteredMatching(const char* pattern) const {
    return Interface_IsRegisteredMatching(pattern);
  }
  bool IsValueHolder(const char* name) const { return Interface_IsValueHolder(name); }
  void Deregister(const char* name) { Interface_Deregister(name); }
  void DeregisterMatching(const char* pattern) { Interface_DeregisterMatching(pattern); }
  void DeregisterValueHolder(const char* name) { Interface_DeregisterValueHolder(name); }
  void DeregisterMatchingValueHolder(const char* pattern) {
    Interface_DeregisterMatchingValueHolder(pattern);
  }
  std::uint64_t GetId(const char* name) const { return Interface_GetId(name); }
  AutoRefPtr<ITelemetry> Clone() const { return AutoRefPtr<ITelemetry>(Interface_Clone()); }
  AutoRefPtr<IJSON> GetAllRegistered() const {
    return AutoRefPtr<IJSON>(Interface_GetAllRegistered());
  }
  AutoRefPtr<IJSON> GetAll() const { return AutoRefPtr<IJSON>(Interface_GetAll()); }

protected:
  ~ITelemetry() = default;

private:  // Contract: the host calls these by position, behind those of ICounter
  virtual void Interface_Clear() = 0;
  virtual bool Interface_RegisterValueHolder(const char* name) = 0;
  virtual bool Interface_RegisterCounter(const char* name) = 0;
  virtual bool Interface_Register(const char* name) = 0;
  virtual bool Interface_RegisterMatching(const char* pattern) = 0;
  virtual bool Interface_RegisterModule(const char* module) = 0;
  virtual bool Interface_IsRegistered(const char* name) const = 0;
  virtual bool Interface_IsRegisteredMatching(const char* pattern) const = 0;
  virtual bool Interface_IsValueHolder(const char* name) const = 0;
  virtual void Interface_Deregister(const char* name) = 0;
  virtual void Interface_DeregisterMatching(const char* pattern) = 0;
  virtual void Interface_DeregisterValueHolder(const char* name) = 0;
  virtual void Interface_DeregisterMatchingValueHolder(const char* pattern) = 0;
  virtual std::uint64_t Interface_GetId(const char* name) const = 0;
  virtual ITelemetry* Interface_Clone() const = 0;
  virtual IJSON* Interface_GetAllRegistered() const = 0;
  virtual IJSON* Interface_GetAll() const = 0;
};

}  // namespace Tovrin
