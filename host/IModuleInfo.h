#pragma once

#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IConfiguration.h"
#include "host/IEventScheduler.h"
#include "host/ILogger.h"
#include "host/IObject.h"
#include "host/ITelemetry.h"
#include "host/IThreadPool.h"

namespace Tovrin {

// What the host knows of a loaded module.
class TOVRIN_API IModuleInfo : public IObject {
public:
  AutoRefPtr<IThreadPool> GetThreadPool() const {
    return AutoRefPtr<IThreadPool>(Interface_GetThreadPool());
  }
  AutoRefPtr<IEventScheduler> GetEventScheduler() const {
    return AutoRefPtr<IEventScheduler>(Interface_GetEventScheduler());
  }
  AutoRefPtr<IPolicy> GetPolicy() const;
  AutoRefPtr<IConfiguration> GetConfiguration() const {
    return AutoRefPtr<IConfiguration>(Interface_GetConfiguration());
  }
  AutoRefPtr<ILogger> GetLogger() const { return AutoRefPtr<ILogger>(Interface_GetLogger()); }
  void* GetUserDefinedData() const { return Interface_GetUserDefinedData(); }
  void SetUserDefinedData(void* data) { Interface_SetUserDefinedData(data); }
  AutoRefPtr<ITelemetry> GetTelemetry() const {
    return AutoRefPtr<ITelemetry>(Interface_GetTelemetry());
  }
  std::string GetModuleName() const { return TextOrEmpty(Interface_GetModuleName()); }
  std::string GetFuncOrProcName() const { return TextOrEmpty(Interface_GetFuncOrProcName()); }

protected:
  ~IModuleInfo() = default;

private:  // Contract: the host calls these by position
  virtual IThreadPool* Interface_GetThreadPool() const = 0;
  virtual IEventScheduler* Interface_GetEventScheduler() const = 0;
  virtual IPolicy* Interface_GetPolicy() const = 0;
  virtual IConfiguration* Interface_GetConfiguration() const = 0;
  virtual ILogger* Interface_GetLogger() const = 0;
  virtual void* Interface_GetUserDefinedData() const = 0;
  virtual void Interface_SetUserDefinedData(void* data) = 0;
  virtual ITelemetry* Interface_GetTelemetry() const = 0;
  virtual const char* Interface_GetModuleName() const = 0;
  virtual const char* Interface_GetFuncOrProcName() const = 0;
};

}  // namespace Tovrin

#include "host/IContext.h"  // holds the bodies that need IContext whole; it includes this header in turn
