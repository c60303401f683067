#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CBuffer.h"
#include "Common/CCachedSubBuffer.h"
#include "Common/CUseCounted.h"

namespace RefHost {

// The bytes of a buffer with some of its stretches replaced by a text, made while the stretches are
// still being found. Neither the old nor the new bytes need to fit into memory.
class CChangedBody {
public:
  CChangedBody(CUsePtr<CBuffer> source, std::string_view text)
      : fSource(std::move(source)), fText(text) {}

  // Puts the text in the place of a stretch, which lies behind all that were replaced before.
  void Replace(std::uint64_t offset, std::uint64_t length);
  // Takes over what is left, once. Null when the bytes could not all be read or kept.
  CBuffer* Finish();

private:
  void CopyUpTo(std::uint64_t end);
  void Put(std::string_view bytes);
  void Flush();

  const CCachedSubBuffer fSource;  // most stretches are near the one before
  const std::string fText;
  std::string fBlock;  // collects small pieces for fResult
  CBuffer fResult;
  std::uint64_t fTaken = 0;  // bytes of the source that are copied or replaced
  bool fIsWhole = true;
};

}  // namespace RefHost
