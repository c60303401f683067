#pragma once

#include <cstddef>
#include <cstdint>

// What bytes look like. Pure functions over the bytes; nothing is allocated.

// Index of the first byte that is zero or not 7-bit, size when there is none.
std::size_t FindZeroOrNonAscii(const char* bytes, std::size_t size);

// Index of the first byte that is not 7-bit, size when there is none.
std::size_t FindNonAscii(const char* bytes, std::size_t size);

// Whether the bytes have the form of UTF-8 text.
// Contract: looks at the form alone. Sequences of five and six bytes pass, and so do overlong ones
// and surrogates; a zero byte does not.
bool IsValidUtf8(const char* bytes, std::size_t size);

// Whether the bytes are made of one-, two- and four-byte forms of GB18030.
bool IsGb18030(const char* bytes, std::size_t size);

// 0 nothing or 7-bit text; 1 UTF-8; 2 GB18030; 3 none of them, or a zero byte before any other that
// decides. With QRX_DISABLE_GB18030 set to YES when the library was loaded there is no 2.
int DetectEncoding(const char* bytes, std::size_t size);

// The encoding id that an answer of DetectEncoding stands for.
std::uint32_t EncodingOfDetection(int detected);
