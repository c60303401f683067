#pragma once

#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IHash.h"
#include "host/IObject.h"
#include "host/IVariant.h"

namespace Tovrin {

// Counters and last values over time, each under a key that is a text or an IHash. Ranges are in
// seconds back from now; found tells whether the key is known.
class TOVRIN_API ICounter : public IObject {
public:
  void Increment(const char* key, std::uint64_t value) { Interface_Increment(key, value); }
  void Increment(const IHash* key, std::uint64_t value) { Interface_Increment(key, value); }
  void Decrement(const char* key, std::uint64_t value) { Interface_Decrement(key, value); }
  void Decrement(const IHash* key, std::uint64_t value) { Interface_Decrement(key, value); }
  void DeleteCounter(const char* key) { Interface_DeleteCounter(key); }
  void DeleteCounter(const IHash* key) { Interface_DeleteCounter(key); }
  void DeleteData(const char* key) { Interface_DeleteData(key); }
  void DeleteData(const IHash* key) { Interface_DeleteData(key); }
  void SetData(const char* key, IVariant* value) { Interface_SetData(key, value); }
  void SetData(const IHash* key, IVariant* value) { Interface_SetData(key, value); }
  void ResetData(const char* key, bool flag) { Interface_ResetData(key, flag); }
  void ResetData(const IHash* key, bool flag) { Interface_ResetData(key, flag); }
  void ResetAllCounters(bool flag) { Interface_ResetAllCounters(flag); }
  void ResetAllData(bool flag) { Interface_ResetAllData(flag); }
  void Reset(const char* key, bool flag) { Interface_Reset(key, flag); }
  void Reset(const IHash* key, bool flag) { Interface_Reset(key, flag); }
  void ResetMatching(const char* pattern, bool flag) { Interface_ResetMatching(pattern, flag); }
  void ResetMatchingData(const char* pattern, bool flag) {
    Interface_ResetMatchingData(pattern, flag);
  }
  std::string GetName() const { return TextOrEmpty(Interface_GetName()); }
  bool Has(const char* key) const { return Interface_Has(key); }
  bool Has(const IHash* key) const { return Interface_Has(key); }
  std::uint64_t Get(const char* first, const char* second, std::uint64_t range, bool* found) const {
    return Interface_Get(first, second, range, found);
  }
  std::uint64_t Get(const char* first, const IHash* second, std::uint64_t range,
                    bool* found) const {
    return Interface_Get(first, second, range, found);
  }
  std::uint64_t Get(const IHash* first, const char* second, std::uint64_t range,
                    bool* found) const {
    return Interface_Get(first, second, range, found);
  }
  std::uint64_t Get(const IHash* first, const IHash* second, std::uint64_t range,
                    bool* found) const {
    return Interface_Get(first, second, range, found);
  }
  std::uint64_t GetCurrent(const char* first, const char* second, std::uint64_t range,
                           bool* found) const {
    return Interface_GetCurrent(first, second, range, found);
  }
  std::uint64_t GetCurrent(const char* first, const IHash* second, std::uint64_t range,
                           bool* found) const {
    return Interface_GetCurrent(first, second, range, found);
  }
  std::uint64_t GetCurrent(const IHash* first, const char* second, std::uint64_t range,
                           bool* found) const {
    return Interface_GetCurrent(first, second, range, found);
  }
  std::uint64_t GetCurrent(const IHash* first, const IHash* second, std::uint64_t range,
                           bool* found) const {
    return Interface_GetCurrent(first, second, range, found);
  }
  std::uint64_t GetRange(const char* first, const char* second, std::uint64_t range,
                         bool* found) const {
    return Interface_GetRange(first, second, range, found);
  }
  std::uint64_t GetRange(const char* first, const IHash* second, std::uint64_t range,
                         bool* found) const {
    return Interface_GetRange(first, second, range, found);
  }
  std::uint64_t GetRange(const IHash* first, const char* second, std::uint64_t range,
                         bool* found) const {
    return Interface_GetRange(first, second, range, found);
  }
  std::uint64_t GetRange(const IHash* first, const IHash* second, std::uint64_t range,
                         bool* found) const {
    return Interface_GetRange(first, second, range, found);
  }
  bool HasData(const char* key) const { return Interface_HasData(key); }
  bool HasData(const IHash* key) const { return Interface_HasData(key); }
  AutoRefPtr<IVariant> GetData(const char* key, std::uint64_t range, bool* found) const {
    return AutoRefPtr<IVariant>(Interface_GetData(key, range, found));
  }
  AutoRefPtr<IVariant> GetData(const IHash* key, std::uint64_t range, bool* found) const {
    return AutoRefPtr<IVariant>(Interface_GetData(key, range, found));
  }
  AutoRefPtr<IVariant> GetCurrentData(const char* key, bool* found) const {
    return AutoRefPtr<IVariant>(Interface_GetCurrentData(key, found));
  }
  AutoRefPtr<IVariant> GetCurrentData(const IHash* key, bool* found) const {
    return AutoRefPtr<IVariant>(Interface_GetCurrentData(key, found));
  }

  void ResetAll(bool flag) {
    ResetAllCounters(flag);
    ResetAllData(flag);
  }

protected:
  ~ICounter() = default;

private:  // Contract: the host calls these by position
  virtual void Interface_Increment(const char* key, std::uint64_t value) = 0;
  virtual void Interface_Increment(const IHash* key, std::uint64_t value) = 0;
  virtual void Interface_Decrement(const char* key, std::uint64_t value) = 0;
  virtual void Interface_Decrement(const IHash* key, std::uint64_t value) = 0;
  virtual void Interface_DeleteCounter(const char* key) = 0;
  virtual void Interface_DeleteCounter(const IHash* key) = 0;
  virtual void Interface_DeleteData(const char* key) = 0;
  virtual void Interface_DeleteData(const IHash* key) = 0;
  virtual void Interface_SetData(const char* key, IVariant* value) = 0;
  virtual void Interface_SetData(const IHash* key, IVariant* value) = 0;
  virtual void Interface_ResetData(const char* key, bool flag) = 0;
  virtual void Interface_ResetData(const IHash* key, bool flag) = 0;
  virtual void Interface_ResetAllCounters(bool flag) = 0;
  virtual void Interface_ResetAllData(bool flag) = 0;
  virtual void Interface_Reset(const char* key, bool flag) = 0;
  virtual void Interface_Reset(const IHash* key, bool flag) = 0;
  virtual void Interface_ResetMatching(const char* pattern, bool flag) = 0;
  virtual void Interface_ResetMatchingData(const char* pattern, bool flag) = 0;
  virtual const char* Interface_GetName() const = 0;
  virtual bool Interface_Has(const char* key) const = 0;
  virtual bool Interface_Has(const IHash* key) const = 0;
  virtual std::uint64_t Interface_Get(const char* first, const char* second, std::uint64_t range,
                                      bool* found) const = 0;
  virtual std::uint64_t Interface_Get(const char* first, const IHash* second, std::uint64_t range,
                                      bool* found) const = 0;
  virtual std::uint64_t Interface_Get(const IHash* first, const char* second, std::uint64_t range,
                                      bool* found) const = 0;
  virtual std::uint64_t Interface_Get(const IHash* first, const IHash* second, std::uint64_t range,
                                      bool* found) const = 0;
  virtual std::uint64_t Interface_GetCurrent(const char* first, const char* second,
                                             std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetCurrent(const char* first, const IHash* second,
                                             std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetCurrent(const IHash* first, const char* second,
                                             std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetCurrent(const IHash* first, const IHash* second,
                                             std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetRange(const char* first, const char* second,
                                           std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetRange(const char* first, const IHash* second,
                                           std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetRange(const IHash* first, const char* second,
                                           std::uint64_t range, bool* found) const = 0;
  virtual std::uint64_t Interface_GetRange(const IHash* first, const IHash* second,
                                           std::uint64_t range, bool* found) const = 0;
  virtual bool Interface_HasData(const char* key) const = 0;
  virtual bool Interface_HasData(const IHash* key) const = 0;
  virtual IVariant* Interface_GetData(const char* key, std::uint64_t range, bool* found) const = 0;
  virtual IVariant* Interface_GetData(const IHash* key, std::uint64_t range, bool* found) const = 0;
  virtual IVariant* Interface_GetCurrentData(const char* key, bool* found) const = 0;
  virtual IVariant* Interface_GetCurrentData(const IHash* key, bool* found) const = 0;
};

}  // namespace Tovrin
