#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IDataRef.h"
#include "host/IJSON.h"
#include "host/IObject.h"
#include "host/IVectorGeneric.h"

namespace Tovrin {

// Settings by key. A getter answers its default where the key is missing or of another kind.
class TOVRIN_API IConfiguration : public IObject {
public:
  bool LoadFromString(const char* text) { return Interface_LoadFromString(text); }
  bool LoadFromString(const std::string& text) { return Interface_LoadFromString(text.c_str()); }
  std::size_t GetSize() const { return Interface_GetSize(); }
  bool HasKey(const char* key) const { return Interface_HasKey(key); }
  bool IsBoolean(const char* key) const { return Interface_IsBoolean(key); }
  bool IsInteger(const char* key) const { return Interface_IsInteger(key); }
  bool IsReal(const char* key) const { return Interface_IsReal(key); }
  bool IsString(const char* key) const { return Interface_IsString(key); }
  bool IsJSON(const char* key) const { return Interface_IsJSON(key); }
  std::int64_t GetInteger(const char* key, std::int64_t fallback) const {
    return Interface_GetInteger(key, fallback);
  }
  double GetReal(const char* key, double fallback) const {
    return Interface_GetReal(key, fallback);
  }
  bool GetBoolean(const char* key, bool fallback) const {
    return Interface_GetBoolean(key, fallback);
  }
  AutoRefPtr<IJSON> GetJSON(const char* key) const {
    return AutoRefPtr<IJSON>(Interface_GetJSON(key));
  }
  AutoRefPtr<IDataRef> LoadConfigData(IContext* context, const char* name) {
    return AutoRefPtr<IDataRef>(Interface_LoadConfigData(context, name));
  }
  std::string GetString(const char* key, const char* fallback) const {
    return TextOrEmpty(Interface_GetString(key, fallback));
  }
  void ToString(std::string& text) const { text = TextOrEmpty(Interface_ToString()); }
  AutoRefPtr<const IVectorGeneric> GetAllMatchingKeys(const char* pattern) const {
    return AutoRefPtr<const IVectorGeneric>(Interface_GetAllMatchingKeys(pattern));
  }

protected:
  ~IConfiguration() = default;

private:  // Contract: the host calls these by position
  virtual bool Interface_LoadFromString(const char* text) = 0;
  virtual std::size_t Interface_GetSize() const = 0;
  virtual bool Interface_HasKey(const char* key) const = 0;
  virtual bool Interface_IsBoolean(const char* key) const = 0;
  virtual bool Interface_IsInteger(const char* key) const = 0;
  virtual bool Interface_IsReal(const char* key) const = 0;
  virtual bool Interface_IsString(const char* key) const = 0;
  virtual bool Interface_IsJSON(const char* key) const = 0;
  virtual std::int64_t Interface_GetInteger(const char* key, std::int64_t fallback) const = 0;
  virtual double Interface_GetReal(const char* key, double fallback) const = 0;
  virtual bool Interface_GetBoolean(const char* key, bool fallback) const = 0;
  virtual IJSON* Interface_GetJSON(const char* key) const = 0;
  virtual IDataRef* Interface_LoadConfigData(IContext* context, const char* name) = 0;
  virtual const char* Interface_GetString(const char* key, const char* fallback) const = 0;
  virtual const char* Interface_ToString() const = 0;
  virtual const IVectorGeneric* Interface_GetAllMatchingKeys(const char* pattern) const = 0;
};

}  // namespace Tovrin
