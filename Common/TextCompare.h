#pragma once

#include <cstdint>
#include <string_view>

// Comparison of texts in different encodings, code point by code point, in place: nothing is
// allocated, and no text makes the search slow.
//
// Without regard to case means: by full case folding, so that "STRASSE" equals "straße". Where one
// side is RAW both are read as bytes, and only the letters of ASCII have a case.

// A borrowed text in an encoding that can be read in place: ASCII, UTF-8, ISO-8859-1, UTF-32LE or
// RAW. What the encoding does not allow is passed over, as a conversion would drop it.
struct TextView {
  std::string_view bytes;
  std::uint32_t encoding;
};

// Whether text of that encoding can be read in place.
bool IsReadInPlace(std::uint32_t encoding);

// -1, 0 or 1 in the order of the code points, with case.
int CompareTexts(TextView left, TextView right);

bool EqualIgnoringCase(TextView left, TextView right);
bool StartsWithIgnoringCase(TextView text, TextView prefix);
bool EndsWithIgnoringCase(TextView text, TextView suffix);

inline constexpr std::uint64_t kTextNotFound = ~std::uint64_t{0};

// Index of the code point in which the first occurrence begins, or kTextNotFound.
std::uint64_t FindIgnoringCase(TextView text, TextView wanted);
