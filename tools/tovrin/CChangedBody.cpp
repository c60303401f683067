#include "tools/tovrin/CChangedBody.h"

#include <algorithm>

namespace RefHost {
namespace {

constexpr std::size_t kBlockSize = std::size_t{64} << 10;

}  // namespace

void CChangedBody::Flush() {
  fIsWhole = fResult.Append(fBlock.data(), fBlock.size()) && fIsWhole;
  fBlock.clear();
}

void CChangedBody::Put(std::string_view bytes) {
  if (fBlock.size() + bytes.size() > kBlockSize) Flush();
  fBlock.append(bytes);
}

void CChangedBody::CopyUpTo(std::uint64_t end) {
  char piece[kBlockSize];
  while (fTaken < end && fIsWhole) {
    const std::uint64_t wanted = std::min<std::uint64_t>(end - fTaken, sizeof piece);
    const std::uint64_t count = fSource.Read(fTaken, piece, wanted);
    if (count == 0) fIsWhole = false;
    Put({piece, static_cast<std::size_t>(count)});
    fTaken += count;
  }
}

void CChangedBody::Replace(std::uint64_t offset, std::uint64_t length) {
  CopyUpTo(offset);
  Put(fText);
  fTaken = offset + length;
}

CBuffer* CChangedBody::Finish() {
  CopyUpTo(fSource.GetSize());
  Flush();
  return fIsWhole ? &fResult : nullptr;
}

}  // namespace RefHost
