#pragma once

#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IDataRef.h"
#include "host/IJSON.h"
#include "host/IObject.h"
#include "host/IVariant.h"
#include "host/TypeIds.h"

namespace Tovrin {

// The rule set that runs, and the source of transactions.
class TOVRIN_API IPolicy : public IObject {
public:
  AutoRefPtr<IContext> CreateTransaction(const char* name);  // empty when the host gives none
  bool ExecuteTransaction(const AutoRefPtr<IContext>& context) {
    return Interface_ExecuteTransaction(context.get());
  }
  void CleanupTransaction(const AutoRefPtr<IContext>& context) {
    Interface_CleanupTransaction(context.get());
  }
  std::uint64_t GetUserDataId(const char* name) const { return Interface_GetUserDataId(name); }
  AutoRefPtr<IDataRef> LoadData(IContext* context, const char* name) {
    return AutoRefPtr<IDataRef>(Interface_LoadData(context, name));
  }
  AutoRefPtr<IVariant> LoadValue(IContext* context, TypeId typeId, const char* name) {
    return AutoRefPtr<IVariant>(Interface_LoadValue(context, typeId, name));
  }
  AutoRefPtr<IVariant> CreateUserDefinedVariable(const char* typeName) {
    return AutoRefPtr<IVariant>(Interface_CreateUserDefinedVariable(typeName));
  }
  AutoRefPtr<IContext> ContinueRemoteTransaction(const AutoRefPtr<IDataRef>& data,
                                                 const char* name);
  std::uint64_t GetTovrinInstanceId() const { return Interface_GetTovrinInstanceId(); }
  AutoRefPtr<IJSON> ToJson() const { return AutoRefPtr<IJSON>(Interface_ToJson()); }

protected:
  ~IPolicy() = default;

private:  // Contract: the host calls these by position
  virtual IContext* Interface_CreateTransaction(const char* name) = 0;
  virtual bool Interface_ExecuteTransaction(IContext* context) = 0;
  virtual void Interface_CleanupTransaction(IContext* context) = 0;
  virtual std::uint64_t Interface_GetUserDataId(const char* name) const = 0;
  virtual IDataRef* Interface_LoadData(IContext* context, const char* name) = 0;
  virtual IVariant* Interface_LoadValue(IContext* context, TypeId typeId, const char* name) = 0;
  virtual IVariant* Interface_CreateUserDefinedVariable(const char* typeName) = 0;
  virtual IContext* Interface_ContinueRemoteTransaction(IDataRef* data, const char* name) = 0;
  virtual std::uint64_t Interface_GetTovrinInstanceId() const = 0;
  virtual IJSON* Interface_ToJson() const = 0;
};

}  // namespace Tovrin

#include "host/IContext.h"  // holds the bodies that need IContext whole; it includes this header in turn
