#pragma once

#include <cstdint>

#include "Common/CText.h"

// Bytes of a text made visible, for logs and for pasting into a source. Both take the text's bytes
// in the named encoding, a RAW text's as they are, and answer in ASCII.

// Lines of an offset, 16 bytes in hexadecimal and the same as characters; the size closes the dump:
//
//   00000000  61 62 63                                          |abc|
//   00000003
//
// An empty handle gives an empty text; a text of no bytes has the closing line.
CText HexDump(const CText& text, std::uint32_t encoding);

// The same bytes as a C array with its size:
//
//   const unsigned char memDump[] = {
//   0x61, 0x62, 0x63
//   };
//   const size_t memDumpSize = 3
//
// Contract: nothing stands behind the size, neither a semicolon nor a line end.
CText MemDump(const CText& text, std::uint32_t encoding);
