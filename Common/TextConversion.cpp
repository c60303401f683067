#include "Common/TextConversion.h"

#include <iconv.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>

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

// Takes bytes into a string of units of any size, and grows it as they come.
template <class String>
class ByteSink {
public:
  explicit ByteSink(std::size_t expectedSize) { Resize(expectedSize + kRoom); }

  char* At() { return reinterpret_cast<char*>(fUnits.data()) + fUsed; }
  std::size_t Room() const { return fUnits.size() * kUnit - fUsed; }
  void Take(std::size_t size) { fUsed += size; }
  void Grow(std::size_t size) { Resize(fUnits.size() * kUnit * 3 / 2 + size + kRoom); }
  // What came, without a unit that is not whole.
  String Finish() && {
    fUnits.resize(fUsed / kUnit);
    return std::move(fUnits);
  }

private:
  static constexpr std::size_t kUnit = sizeof(typename String::value_type);
  static constexpr std::size_t kRoom = 32;  // more than any one character with its shifts takes

  void Resize(std::size_t size) { fUnits.resize(size / kUnit + 1); }

  String fUnits;
  std::size_t fUsed = 0;  // bytes
};

// One converter, for one call.
class Converter {
public:
  // The options stand behind the target's name, as the converter has them.
  Converter(std::uint32_t from, std::uint32_t to, const char* options, ConversionMode mode)
      : fMode(mode) {
    const std::string target =
        std::string(EncodingName(to)) + (mode == ConversionMode::Lenient ? options : "");
    fHandle = iconv_open(target.c_str(), EncodingName(from));
  }
  ~Converter() {
    if (IsOpen()) iconv_close(fHandle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // The converted text. Nothing when there is no such converter, or, in exact mode, when something
  // cannot be converted.
  template <class String>
  std::optional<String> Run(std::string_view bytes, std::size_t expectedSize) {
    if (!IsOpen()) return std::nullopt;

    ByteSink<String> sink(expectedSize);
    // The older declarations of iconv take the input without const; it is only read.
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    while (left != 0) {
      const std::size_t before = left;
      const int error = Step(&in, &left, sink);
      if (error == 0) break;
      if (error == E2BIG) {
        sink.Grow(left);
      } else if (fMode == ConversionMode::Exact) {
        return std::nullopt;
      } else if (error == EINVAL) {
        break;  // a sequence that the end cut off: dropped
      } else if (left == before) {
        ++in;  // a converter that does not skip on its own what it cannot read
        --left;
      }
    }
    // Encodings with shift states end in the first one.
    while (Step(nullptr, nullptr, sink) == E2BIG) sink.Grow(0);
    return std::move(sink).Finish();
  }

private:
  bool IsOpen() const { return fHandle != reinterpret_cast<iconv_t>(-1); }

  // 0 or the error. A positive answer of iconv counts what was written as something like it.
  template <class String>
  int Step(char** in, std::size_t* inLeft, ByteSink<String>& sink) {
    char* at = sink.At();
    const std::size_t room = sink.Room();
    std::size_t left = room;
    const std::size_t answer = iconv(fHandle, in, inLeft, &at, &left);
    const int error = answer == static_cast<std::size_t>(-1) ? errno : 0;
    sink.Take(room - left);
    return error;
  }

  const ConversionMode fMode;
  iconv_t fHandle;
};

bool IsScalarText(std::u32string_view wide) {
  return std::all_of(wide.begin(), wide.end(), IsScalarValue);
}

// Reads a text whose encoding says nothing about the order of bytes any more. What is ill-formed is
// ignored, and nothing else: a converter that writes something like it would take a value beyond
// the last code point for a character.
std::optional<std::u32string> Read(OrderedText text, ConversionMode mode) {
  if (text.encoding == Charset::Utf8 || IsPlainAscii(text.bytes, text.encoding)) {
    if (mode == ConversionMode::Exact && !IsWellFormedUtf8(text.bytes)) return std::nullopt;
    return WideFromUtf8(text.bytes);
  }
  if (text.encoding == Charset::Utf32LE) {
    if (mode == ConversionMode::Exact && text.bytes.size() % sizeof(char32_t) != 0) {
      return std::nullopt;
    }
    std::u32string wide(text.bytes.size() / sizeof(char32_t), U'\0');
    if (!wide.empty()) std::memcpy(wide.data(), text.bytes.data(), wide.size() * sizeof(char32_t));
    return wide;
  }
  Converter converter(text.encoding, Charset::Utf32LE, "//IGNORE", mode);
  const std::size_t characters = text.bytes.size() / InputBytesPerCharacter(text.encoding);
  return converter.Run<std::u32string>(text.bytes, characters * sizeof(char32_t));
}

// Writes a text that holds nothing but characters, behind what the target begins with.
std::optional<std::string> Write(OrderedText text, OrderedText target, ConversionMode mode) {
  if (text.encoding == target.encoding) return std::string(text.bytes);

  const ClassicLocaleScope classic;  // what is written for what the target lacks follows the locale
  Converter converter(text.encoding, target.encoding, "//TRANSLIT//IGNORE", mode);
  const std::size_t characters = text.bytes.size() / InputBytesPerCharacter(text.encoding);
  auto written =
      converter.Run<std::string>(text.bytes, characters * OutputBytesPerCharacter(target.encoding));
  if (written && !written->empty()) written->insert(0, target.bytes);
  return written;
}

}  // namespace

bool IsAsciiCompatible(std::uint32_t id) {
  return id == Charset::Ascii || id == Charset::Utf8 || id == Charset::Latin1 ||
         id == Charset::Gb18030;
}

bool IsPlainAscii(std::string_view bytes, std::uint32_t id) {
  return IsAsciiCompatible(id) && FindNonAscii(bytes.data(), bytes.size()) == bytes.size();
}

bool WritesByteOrderMark(std::uint32_t id) {
  if (id < Charset::FirstRegistered) return id == Charset::Utf16 || id == Charset::Utf32;

  const auto one = NarrowText(U"a", id);
  const auto two = NarrowText(U"aa", id);
  return one && two && *two != *one + *one;
}

std::string_view BytesOfWide(std::u32string_view wide) {
  return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char32_t)};
}

std::optional<std::u32string> WideText(std::string_view bytes, std::uint32_t from,
                                       ConversionMode mode) {
  if (!IsKnownEncoding(from)) return std::nullopt;

  auto wide = Read(ResolveByteOrder(bytes, from), mode);
  if (!wide || IsScalarText(*wide)) return wide;
  if (mode == ConversionMode::Exact) return std::nullopt;
  std::erase_if(*wide, [](char32_t value) { return !IsScalarValue(value); });
  return wide;
}

std::optional<std::string> NarrowText(std::u32string_view wide, std::uint32_t to,
                                      ConversionMode mode) {
  if (!IsKnownEncoding(to)) return std::nullopt;
  if (!IsScalarText(wide)) {
    if (mode == ConversionMode::Exact) return std::nullopt;
    return NarrowText(*WideText(BytesOfWide(wide), Charset::Utf32LE), to, mode);
  }

  if (to == Charset::Utf8) return Utf8FromWide(wide);
  auto narrow = Write({BytesOfWide(wide), Charset::Utf32LE}, ResolveTarget(to), mode);
  // Converters drop some code points without a word (language tags), and write others as what reads
  // as something else.
  if (narrow && mode == ConversionMode::Exact && WideText(*narrow, to) != wide) return std::nullopt;
  return narrow;
}

std::optional<std::string> ConvertText(std::string_view bytes, std::uint32_t from, std::uint32_t to,
                                       ConversionMode mode) {
  if (!IsKnownEncoding(from) || !IsKnownEncoding(to)) return std::nullopt;
  if (IsAsciiCompatible(to) && IsPlainAscii(bytes, from)) return std::string(bytes);
  // Perf: where nothing is to be dropped, the code points need not be spelled out; TextBench.
  if (mode == ConversionMode::Lenient && from == Charset::Utf8 && to != Charset::Utf32LE &&
      IsWellFormedUtf8(bytes)) {
    return Write({bytes, from}, ResolveTarget(to), mode);
  }

  const auto wide = WideText(bytes, from, mode);
  return wide ? NarrowText(*wide, to, mode) : std::nullopt;
}
