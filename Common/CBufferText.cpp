#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "Common/CBuffer.h"
#include "Common/CBufferFileImpl.h"
#include "Common/CBufferMemImpl.h"
#include "Common/TextLines.h"
#include "Libs/Platform/MemorySize.h"

// Lines out of a buffer, and the setting that says when buffers swap.

namespace {

constexpr std::uint64_t kFirstWindow = 4096;  // bytes looked at for a line, doubled as needed

constexpr std::uint64_t kDefaultSwapSize = 1048576;
constexpr long long kSmallestSetting = 153600;
constexpr long long kLargestSetting = 1073741824;
constexpr std::uint64_t kTooLargeBecomes = 134217728;

bool SaysDynamic(std::string_view value) {
  constexpr std::string_view kWord = "dynamic";
  return std::ranges::equal(value, kWord, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b;
  });
}

std::uint64_t ReadSwapSize() {
  const char* setting = std::getenv("QRX_CBUFFER_SWAP_SIZE");
  if (!setting || SaysDynamic(setting)) {
    const std::uint64_t memory = PhysicalMemorySize();
    return memory == 0 ? kDefaultSwapSize : SwapSizeForMemory(memory);
  }
  // What is no number counts as 0, and what is beyond 64 bits as the largest.
  const long long bytes = std::strtoll(setting, nullptr, 10);
  if (bytes > kLargestSetting) return kTooLargeBecomes;
  return static_cast<std::uint64_t>(std::max(bytes, kSmallestSetting));
}

// Read when the library is loaded, whoever asks first.
[[maybe_unused]] const std::uint64_t kSwapSizeAtStart = GetGlobalSwapSize();

}  // namespace

std::uint64_t GetGlobalSwapSize() {
  static const std::uint64_t size = ReadSwapSize();
  return size;
}

std::uint64_t SwapSizeForMemory(std::uint64_t memory) {
  struct Row {
    std::uint64_t gibibytes, swapSize;
  };
  constexpr Row kRows[] = {{1, 153600},  {2, 256000},   {4, 512000},
                           {8, 1048576}, {16, 2097152}, {32, 4194304}};
  for (const Row& row : kRows) {
    if (memory <= row.gibibytes << 30) return row.swapSize;
  }
  return 8388608;
}

// So many bytes from the place for reading on: in memory themselves, else a copy. Null when they
// cannot be read.
const char* CBuffer::TextWindow(std::uint64_t length, std::vector<char>& copy) {
  if (fMemory) return static_cast<const char*>(fMemory->GetPointer()) + fReadPos;
  try {
    copy.resize(length);
  } catch (const std::exception&) {
    return nullptr;  // no line end in more bytes than there is memory for
  }
  return fFile->ReadAt(fReadPos, copy.data(), length) == length ? copy.data() : nullptr;
}

std::uint64_t CBuffer::ReadText(Selvane::IUnicodeString* target, const char* encoding, int style,
                                bool* endAtData) {
  if (endAtData) *endAtData = false;
  if (fFrozen || !target) return 0;
  target->Clear();
  if (fReadPos == kNone) fReadPos = 0;
  char next = '\0';
  if (fCompanion != '\0' && fStore->ReadAt(fReadPos, &next, 1) == 1) {
    if (next == fCompanion) ++fReadPos;
    fCompanion = '\0';
  }

  // Carriage returns up to the window's end may belong to a line end that lies behind it, so that
  // is looked at again.
  const std::uint64_t rest = fStore->GetSize() - std::min(fReadPos, fStore->GetSize());
  std::vector<char> copy;
  std::uint64_t window = std::min(kFirstWindow, rest);
  while (window > 0) {
    const char* bytes = TextWindow(window, copy);
    if (!bytes) return 0;
    CText line;
    char isOpen = 0;
    const std::uint64_t taken =
        ExtractLine(line, bytes, window, EncodingId(encoding), style, &isOpen);
    const bool isWhole =
        taken > 0 && std::string_view(bytes, window).find_first_not_of('\r', taken) < window;
    if (!isWhole && window < rest) {
      window = window > rest / 2 ? rest : window * 2;
      continue;
    }
    if (taken == 0) return 0;
    target->Assign(line.Bytes().data(), line.Bytes().size(), EncodingName(line.Encoding()));
    if (isOpen != 0) fCompanion = bytes[taken - 1] == '\n' ? '\r' : '\n';
    if (endAtData) *endAtData = isOpen != 0;
    fReadPos += taken;
    fMetEnd = false;
    return taken;
  }
  return 0;
}
