#include "Common/TextConversion.h"

#include <iconv.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "Common/EncodingRegistry.h"
#include "Common/TextDetection.h"
#include "Common/Utf8.h"
#include "Libs/Platform/ClassicLocale.h"

static_assert(std::endian::native == std::endian::little,
              "the wide form is UTF-32LE and is read in place");

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kMark16BE = "\xFE\xFF"sv;
constexpr std::string_view kMark16LE = "\xFF\xFE"sv;
constexpr std::string_view kMark32BE = "\0\0\xFE\xFF"sv;
constexpr std::string_view kMark32LE = "\xFF\xFE\0\0"sv;

// A text whose encoding has an order of bytes, where it has one at all.
struct OrderedText {
  std::string_view bytes;
  std::uint32_t encoding;
};

// Takes the byte order mark of "UTF-16" and "UTF-32" off, and names the encoding that it stands
// for. The converter never sees these two names: what it makes of them differs between
// implementations.
OrderedText ResolveByteOrder(std::string_view bytes, std::uint32_t encoding) {
  const auto resolve = [bytes](std::string_view big, std::uint32_t bigId, std::string_view little,
                               std::uint32_t littleId) -> OrderedText {
    if (bytes.starts_with(big)) return {bytes.substr(big.size()), bigId};
    if (bytes.starts_with(little)) return {bytes.substr(little.size()), littleId};
    return {bytes, bigId};
  };
  if (encoding == Charset::Utf16) {
    return resolve(kMark16BE, Charset::Utf16BE, kMark16LE, Charset::Utf16LE);
  }
  if (encoding == Charset::Utf32) {
    return resolve(kMark32BE, Charset::Utf32BE, kMark32LE, Charset::Utf32LE);
  }
  return {bytes, encoding};
}

// What a text in the target begins with, and the encoding of what follows.
OrderedText ResolveTarget(std::uint32_t encoding) {
  if (encoding == Charset::Utf16) return {kMark16BE, Charset::Utf16BE};
  if (encoding == Charset::Utf32) return {kMark32BE, Charset::Utf32BE};
  return {{}, encoding};
}

// Bytes that a character takes at least, to size the first output by.
std::size_t InputBytesPerCharacter(std::uint32_t id) {
  switch (id) {
    case Charset::Utf32LE:
    case Charset::Utf32BE:
      return 4;
    case Charset::Utf16LE:
    case Charset::Utf16BE:
      return 2;
    default:
      return 1;
  }
}

// One converter, for one call.
class Converter {
public:
  Converter(std::uint32_t from, std::uint32_t to, ConversionMode mode) : fMode(mode) {
    const std::string target =
        EncodingName(to) + std::string(mode == ConversionMode::Lenient ? "//TRANSLIT//IGNORE" : "");
    fHandle = iconv_open(target.c_str(), EncodingName(from));
  }
  ~Converter() {
    if (IsOpen()) iconv_close(fHandle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool IsOpen() const { return fHandle != reinterpret_cast<iconv_t>(-1); }

  // Appends the converted text. False when something cannot be converted, in exact mode alone.
  bool Run(std::string_view bytes, std::size_t expectedSize, std::string& out) {
    // The older declarations of iconv take the input without const; it is only read.
    fIn = const_cast<char*>(bytes.data());
    fInLeft = bytes.size();
    fOut = &out;
    fUsed = out.size();
    out.resize(fUsed + expectedSize + kRoom);

    while (fInLeft != 0) {
      const std::size_t before = fInLeft;
      const int error = Step(&fIn, &fInLeft);
      if (error == 0) break;
      if (error == E2BIG) {
        Grow();
      } else if (fMode == ConversionMode::Exact) {
        return false;
      } else if (error == EINVAL) {
        break;  // a sequence that the end cut off: dropped
      } else if (fInLeft == before) {
        ++fIn;  // a converter that does not skip on its own what it cannot read
        --fInLeft;
      }
    }
    // Encodings with shift states end in the first one.
    while (Step(nullptr, nullptr) == E2BIG) Grow();
    out.resize(fUsed);
    return true;
  }

private:
  static constexpr std::size_t kRoom = 32;  // more than any one character with its shifts takes

  // 0 or the error. A positive answer of iconv counts what was written as something like it.
  int Step(char** in, std::size_t* inLeft) {
    char* at = fOut->data() + fUsed;
    std::size_t left = fOut->size() - fUsed;
    const std::size_t answer = iconv(fHandle, in, inLeft, &at, &left);
    const int error = answer == static_cast<std::size_t>(-1) ? errno : 0;
    fUsed = fOut->size() - left;
    return error;
  }

  void Grow() { fOut->resize(fOut->size() + fInLeft + fOut->size() / 2 + kRoom); }

  const ConversionMode fMode;
  iconv_t fHandle;
  char* fIn = nullptr;      // what is still to be read
  std::size_t fInLeft = 0;  // bytes of it
  std::string* fOut = nullptr;
  std::size_t fUsed = 0;  // bytes written to fOut
};

// The two pairs that everything else here stands on; no converter is asked. Nothing for other
// pairs.
std::optional<std::string> ConvertDirectly(std::string_view bytes, std::uint32_t from,
                                           std::uint32_t to) {
  if (from == Charset::Utf8 && to == Charset::Utf32LE) {
    const std::u32string wide = WideFromUtf8(bytes);
    return std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char32_t));
  }
  if (from == Charset::Utf32LE && to == Charset::Utf8) {
    std::u32string wide(bytes.size() / sizeof(char32_t), U'\0');
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(char32_t));
    return Utf8FromWide(wide);
  }
  return std::nullopt;
}

bool IsSevenBit(std::string_view bytes) {
  return FindNonAscii(bytes.data(), bytes.size()) == bytes.size();
}

}  // namespace

bool IsAsciiCompatible(std::uint32_t id) {
  return id == Charset::Ascii || id == Charset::Utf8 || id == Charset::Latin1 ||
         id == Charset::Gb18030;
}

std::optional<std::string> ConvertText(std::string_view bytes, std::uint32_t from, std::uint32_t to,
                                       ConversionMode mode) {
  if (!IsKnownEncoding(from) || !IsKnownEncoding(to)) return std::nullopt;
  if (IsAsciiCompatible(from) && IsAsciiCompatible(to) && IsSevenBit(bytes)) {
    return std::string(bytes);
  }

  const OrderedText source = ResolveByteOrder(bytes, from);
  const OrderedText target = ResolveTarget(to);
  if (mode == ConversionMode::Lenient) {
    if (auto direct = ConvertDirectly(source.bytes, source.encoding, target.encoding)) {
      return direct;
    }
  }

  const ClassicLocaleScope classic;  // what is written for what the target lacks follows the locale
  Converter converter(source.encoding, target.encoding, mode);
  if (!converter.IsOpen()) return std::nullopt;
  std::string out(target.bytes);
  const std::size_t characters = source.bytes.size() / InputBytesPerCharacter(source.encoding);
  if (!converter.Run(source.bytes, characters * OutputBytesPerCharacter(target.encoding), out)) {
    return std::nullopt;
  }
  return out;
}

std::optional<std::u32string> WideText(std::string_view bytes, std::uint32_t from) {
  if (from == Charset::Utf8) return WideFromUtf8(bytes);
  const auto converted = ConvertText(bytes, from, Charset::Utf32LE);
  if (!converted) return std::nullopt;
  std::u32string wide(converted->size() / sizeof(char32_t), U'\0');
  std::memcpy(wide.data(), converted->data(), wide.size() * sizeof(char32_t));
  return wide;
}
