#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/CText.h"

// Where a line ends. Any other number is lazy as well.
enum LineEndStyle : int {
  kLineEndStrict = 0,         // CR LF alone; a line feed without its carriage return is passed over
  kLineEndLazy = 1,           // a line feed, and the carriage returns before it, or else behind it
  kLineEndFirstOfEither = 2,  // whichever of the two comes first, with its companions
};

// Takes one line from the beginning of the bytes: puts it into out without its end, and tells how
// many bytes it took with its end; 0, and an empty out, when there is no line end.
//
// The line comes under the encoding, unless that is UTF-8: then DetectEncoding finds it, so that a
// file marked as UTF-8 may hold lines in others, and a 7-bit line is ASCII.
//
// The byte behind endAtData, which may be null, becomes 1 when the end is the last byte of the data
// and has a companion that may still come in the next piece, else 0. The strict style leaves it 0.
//
// With QRX_DISABLE_LAZY_EOL_STYLE set to YES when the library was loaded, lazy is strict.
std::size_t ExtractLine(CText& out, const char* bytes, std::size_t size, std::uint32_t encoding,
                        int style, char* endAtData);
