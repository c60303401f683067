#include "Common/CStringImpl.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "Common/TextConversion.h"
#include "Common/TextDetection.h"
#include "Common/Utf8.h"

namespace {

// So many characters fit in no memory, and their bytes can still be counted.
constexpr std::uint64_t kMostReserved = std::uint64_t{1} << 60;

constexpr std::size_t kUnit = sizeof(char32_t);  // of a wide text

// One unit a byte.
std::u32string Widened(std::string_view bytes) {
  std::u32string wide(bytes.size(), U'\0');
  std::transform(bytes.begin(), bytes.end(), wide.begin(),
                 [](char byte) { return static_cast<unsigned char>(byte); });
  return wide;
}

// Puts whole units in the place of those from a position on. The bytes may be of the text itself.
void ReplaceUnits(std::u32string& wide, std::size_t position, const void* bytes, std::size_t size) {
  const std::size_t units = position + size / kUnit;
  if (units <= wide.capacity()) {
    if (units > wide.size()) wide.resize(units);
    std::memmove(wide.data() + position, bytes, size / kUnit * kUnit);
    wide.resize(units);
    return;
  }
  std::u32string grown;
  grown.reserve(2 * units);
  grown.append(wide, 0, position).resize(units);
  std::memcpy(grown.data() + position, bytes, size / kUnit * kUnit);
  wide = std::move(grown);
}

}  // namespace

// ---- bytes

void CStringImpl::ByteStore::Assign(std::string_view bytes) {
  if (bytes.size() <= kInlineBytes) {
    std::memmove(fInline, bytes.data(), bytes.size());
    DropBlock();  // not before: the bytes may be in it
    fData = fInline;
    fCapacity = kInlineBytes;
  } else if (bytes.size() <= fCapacity) {
    std::memmove(fData, bytes.data(), bytes.size());
  } else {
    char* const block = NewBlock(bytes.size());
    std::memcpy(block, bytes.data(), bytes.size());
    DropBlock();
    fData = block;
    fCapacity = bytes.size();
  }
  fSize = bytes.size();
  fData[fSize] = '\0';
}

void CStringImpl::ByteStore::Append(std::string_view bytes) {
  const std::size_t size = fSize + bytes.size();
  if (size > fCapacity) {
    const std::size_t capacity = std::max(size, fCapacity * 2);
    char* const block = NewBlock(capacity);
    std::memcpy(block, fData, fSize);
    std::memcpy(block + fSize, bytes.data(), bytes.size());
    DropBlock();
    fData = block;
    fCapacity = capacity;
  } else {
    std::memmove(fData + fSize, bytes.data(), bytes.size());
  }
  fSize = size;
  fData[fSize] = '\0';
}

void CStringImpl::ByteStore::Erase(std::size_t position, std::size_t count) {
  std::memmove(fData + position, fData + position + count, fSize - position - count);
  fSize -= count;
  fData[fSize] = '\0';
}

void CStringImpl::ByteStore::Reserve(std::size_t size) {
  if (size <= fCapacity) return;
  char* const block = NewBlock(size);
  std::memcpy(block, fData, fSize + 1);
  DropBlock();
  fData = block;
  fCapacity = size;
}

void CStringImpl::ByteStore::Drop() {
  DropBlock();
  fData = fInline;
  fInline[0] = '\0';
  fSize = 0;
  fCapacity = kInlineBytes;
}

void CStringImpl::ByteStore::DropBlock() {
  if (!IsInline()) delete[] fData;
}

// ---- life

CStringImpl::CStringImpl(std::string_view bytes, std::uint32_t encoding) {
  Assign(bytes.data(), bytes.size(), encoding);
}

CStringImpl::~CStringImpl() {
  DropStores();
}

void CStringImpl::DropCaches() {
  delete fUtf8.exchange(nullptr, std::memory_order_relaxed);
  fLength.store(kUnknownLength, std::memory_order_relaxed);
  if (fEncoding != Charset::Utf32LE) delete fWide.exchange(nullptr, std::memory_order_relaxed);
}

void CStringImpl::DropStores() {
  delete fUtf8.exchange(nullptr, std::memory_order_relaxed);
  delete fWide.exchange(nullptr, std::memory_order_relaxed);
  fNarrow.Drop();
}

// ---- reading

std::string_view CStringImpl::Bytes() const {
  if (fEncoding != Charset::Utf32LE) return fNarrow.View();
  const std::u32string* wide = fWide.load(std::memory_order_acquire);
  return wide ? BytesOfWide(*wide) : fNarrow.View();
}

std::u32string_view CStringImpl::Wide() const {
  if (const std::u32string* ready = fWide.load(std::memory_order_acquire)) return *ready;

  const std::lock_guard guard(fLock);
  std::u32string* wide = fWide.load(std::memory_order_relaxed);
  if (!wide) {
    wide = new std::u32string(MakeWide());
    fWide.store(wide, std::memory_order_release);
  }
  return *wide;
}

std::u32string CStringImpl::MakeWide() const {
  const std::string_view bytes = fNarrow.View();
  auto wide = WideText(bytes, fEncoding);
  return wide ? std::move(*wide) : Widened(bytes);
}

std::string_view CStringImpl::Utf8() const {
  if (fEncoding == Charset::Utf8 || !IsKnownEncoding(fEncoding) ||
      IsPlainAscii(Bytes(), fEncoding)) {
    return Bytes();
  }
  if (const std::string* ready = fUtf8.load(std::memory_order_acquire)) return *ready;

  const std::lock_guard guard(fLock);
  std::string* utf8 = fUtf8.load(std::memory_order_relaxed);
  if (!utf8) {
    utf8 = new std::string(ToNarrow(Charset::Utf8));
    fUtf8.store(utf8, std::memory_order_release);
  }
  return *utf8;
}

std::uint64_t CStringImpl::Length() const {
  const std::uint64_t known = fLength.load(std::memory_order_relaxed);
  if (known != kUnknownLength) return known;

  const std::lock_guard guard(fLock);
  const std::uint64_t length = CountLength();
  fLength.store(length, std::memory_order_relaxed);
  return length;
}

bool CStringImpl::HasByteCharacters() const {
  return fEncoding == Charset::Ascii || fEncoding == Charset::Latin1 || !IsKnownEncoding(fEncoding);
}

std::uint64_t CStringImpl::CountLength() const {
  if (HasByteCharacters()) return fNarrow.View().size();
  if (fEncoding == Charset::Utf8) return CountUtf8(fNarrow.View());
  if (fEncoding == Charset::Utf32LE) return Bytes().size() / kUnit;
  return Wide().size();
}

std::optional<std::string_view> CStringImpl::PartInPlace(std::uint64_t position,
                                                         std::uint64_t count) const {
  const std::string_view bytes = Bytes();
  const std::uint64_t length = Length();
  if (position >= length) return bytes.substr(bytes.size());

  const bool isToTheEnd = count >= length - position;
  const auto part = [&](std::size_t from, std::size_t size) {
    return isToTheEnd ? bytes.substr(from) : bytes.substr(from, size);
  };
  if (HasByteCharacters()) return part(position, count);
  if (fEncoding == Charset::Utf32LE) return part(position * kUnit, count * kUnit);
  if (fEncoding != Charset::Utf8) return std::nullopt;
  const std::size_t from = Utf8Prefix(bytes, position);
  return part(from, isToTheEnd ? 0 : Utf8Prefix(bytes.substr(from), count));
}

TextView CStringImpl::View() const {
  if (IsReadInPlace(fEncoding)) return {Bytes(), fEncoding};
  return {BytesOfWide(Wide()), Charset::Utf32LE};
}

std::string CStringImpl::ToNarrow(std::uint32_t encoding) const {
  if (encoding == fEncoding) return std::string(Bytes());
  auto converted = ConvertText(Bytes(), fEncoding, encoding);
  return converted ? std::move(*converted) : std::string(Bytes());
}

std::shared_ptr<const char> CStringImpl::ShareBytes() const {
  return {Bytes().data(), CStringImplDeleter(ShareUse(this))};
}

// ---- changing

void CStringImpl::Assign(const void* bytes, std::size_t size, std::uint32_t encoding) {
  if (size == 0) {
    DropStores();
    fEncoding = encoding;
    fLength.store(0, std::memory_order_relaxed);
    return;
  }
  if (encoding == Charset::Utf32LE) {
    AssignWide(bytes, size);
    return;
  }
  fNarrow.Assign({static_cast<const char*>(bytes), size});
  delete fWide.exchange(nullptr, std::memory_order_relaxed);
  delete fUtf8.exchange(nullptr, std::memory_order_relaxed);
  fEncoding = encoding;
  fLength.store(HasByteCharacters() ? size : kUnknownLength, std::memory_order_relaxed);
}

void CStringImpl::AssignWide(const void* bytes, std::size_t size) {
  std::u32string* wide = fWide.load(std::memory_order_relaxed);
  std::unique_ptr<std::u32string> made;  // the text's only when it holds what it should
  if (!wide) {
    made = std::make_unique<std::u32string>();
    wide = made.get();
  }
  ReplaceUnits(*wide, 0, bytes, size);
  if (made) fWide.store(made.release(), std::memory_order_release);
  fNarrow.Drop();  // not before, since the bytes may be in it, or in the UTF-8 form
  delete fUtf8.exchange(nullptr, std::memory_order_relaxed);
  fEncoding = Charset::Utf32LE;
  fLength.store(wide->size(), std::memory_order_relaxed);
}

std::u32string& CStringImpl::OwnWide() {
  std::u32string* wide = fWide.load(std::memory_order_relaxed);
  if (!wide) {
    wide = new std::u32string;
    fWide.store(wide, std::memory_order_release);
  }
  return *wide;
}

void CStringImpl::Append(const void* bytes, std::size_t size, std::uint32_t encoding) {
  if (size == 0) return;
  const std::string_view addition(static_cast<const char*>(bytes), size);
  const bool hasMark = WritesByteOrderMark(fEncoding);
  const bool isSameForm = encoding == fEncoding && !hasMark;
  if (isSameForm || (IsPlainAscii(addition, encoding) && IsAsciiCompatible(fEncoding))) {
    AppendBytes(addition);
    return;
  }

  const auto exactForm = [this](std::u32string_view text) {
    return NarrowText(text, fEncoding, ConversionMode::Exact);
  };
  const auto wide = WideText(addition, encoding);
  if (!wide) {
    AppendBytes(addition);
  } else if (const auto own = hasMark ? std::nullopt : exactForm(*wide)) {
    AppendBytes(*own);
  } else if (auto whole = WideText(Bytes(), fEncoding)) {
    // Written anew: behind the one mark that a text may have, or in UTF-8.
    *whole += *wide;
    const auto rewritten = hasMark ? exactForm(*whole) : std::nullopt;
    const std::string text = rewritten ? *rewritten : Utf8FromWide(*whole);
    Assign(text.data(), text.size(), rewritten ? fEncoding : Charset::Utf8);
  } else {
    AppendBytes(addition);
  }
}

// In the text's own encoding, or whatever they mean.
void CStringImpl::AppendBytes(std::string_view bytes) {
  if (fEncoding == Charset::Utf32LE) {
    std::u32string& wide = OwnWide();
    ReplaceUnits(wide, wide.size(), bytes.data(), bytes.size());
  } else {
    fNarrow.Append(bytes);
  }
  DropCaches();
}

void CStringImpl::Erase(std::uint64_t position, std::uint64_t count) {
  const std::uint64_t length = Length();
  if (position >= length || count == 0) return;
  count = std::min(count, length - position);

  if (fEncoding == Charset::Utf32LE) {
    OwnWide().erase(position, count);
  } else if (const auto part = PartInPlace(position, count)) {
    fNarrow.Erase(static_cast<std::size_t>(part->data() - Bytes().data()), part->size());
  } else {
    std::u32string wide(Wide());
    wide.erase(position, count);
    const auto own = NarrowText(wide, fEncoding);
    fNarrow.Assign(own ? *own : std::string(wide.begin(), wide.end()));
  }
  DropCaches();
}

void CStringImpl::Reserve(std::uint64_t characters) {
  if (characters > kMostReserved) throw std::length_error("CStringImpl::Reserve");
  if (fEncoding == Charset::Utf32LE) {
    OwnWide().reserve(characters);
  } else {
    fNarrow.Reserve(characters * OutputBytesPerCharacter(fEncoding));
  }
}
