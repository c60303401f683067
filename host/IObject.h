#pragma once

#include <cstdint>
#include <string>

#define TOVRIN_API __attribute__((visibility("default")))

namespace Tovrin {

// A text of the host, which may be null.
inline std::string TextOrEmpty(const char* text) {
  return text ? std::string(text) : std::string();
}

// Root of all that crosses between host and module: a counted object.
class TOVRIN_API IObject {
public:
  void AddRef() const { Interface_AddRef(); }
  bool Release() const { return Interface_Release(); }
  std::int32_t GetCount() const { return Interface_GetCount(); }

protected:
  ~IObject() = default;

private:
  virtual void Interface_AddRef() const = 0;
  virtual bool Interface_Release() const = 0;
  virtual std::int32_t Interface_GetCount() const = 0;
};

}  // namespace Tovrin
