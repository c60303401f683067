#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/CUseCounted.h"

namespace Selvane {

// A text of the common library as others see it. Encodings go by name. The order of the operations
// is part of the contract.
//
// Pointers that are handed out belong to the text and live until its next change. Positions and
// counts are characters, sizes are bytes; null for another text changes nothing.
class IUnicodeString : public IObject {
public:
  virtual std::uint64_t GetLength() = 0;
  virtual std::uint64_t GetByteSize() = 0;
  virtual const char* GetBytes() = 0;
  virtual const char* GetEncodingName() = 0;
  virtual bool IsEmpty() = 0;
  virtual void Reserve(std::uint64_t characters) = 0;
  virtual void Assign(const void* bytes, std::size_t size, const char* encoding) = 0;
  virtual void Assign(IUnicodeString* other) = 0;
  virtual void Append(const void* bytes, std::size_t size, const char* encoding) = 0;
  virtual void Append(IUnicodeString* other) = 0;
  virtual void Erase(std::size_t position, std::size_t count) = 0;
  virtual void Clear() = 0;
  virtual bool Equals(IUnicodeString* other) = 0;
  virtual bool Equals(const void* bytes, std::size_t size, const char* encoding) = 0;
  // -1, 0 or 1 in the order of the code points.
  virtual std::int32_t Compare(const void* bytes, std::size_t size, const char* encoding) = 0;
  virtual std::int32_t Compare(IUnicodeString* other) = 0;
  virtual std::int32_t Compare(const char* text, const char* encoding) = 0;
  // Writes up to size bytes of the text in that encoding, and tells how many.
  virtual std::size_t Read(void* buffer, std::size_t size, const char* encoding) = 0;
  virtual const char* GetUtf8() = 0;

protected:
  ~IUnicodeString() = default;
};

}  // namespace Selvane
