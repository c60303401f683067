#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Common/CText.h"

// The bytes with every "%41" replaced by what it stands for; nothing when two hexadecimal digits
// are missing behind a "%". A "+" stays a "+".
std::optional<std::string> DecodePercent(std::string_view bytes);

// Makes a text of a URL: finds its encoding and puts the input into out under that; with decode the
// percent escapes are replaced, and text that was plain before takes the encoding of what came out.
// encodingOut, which may be null, gets the encoding of out. With escapeBlanks, every blank of input
// becomes "%20". False for a bad escape: out then holds the input, which is as it was.
//
// Contract: escapeBlanks is for input alone. out was made before and keeps its blanks.
bool ToUrlText(std::string& input, CText& out, std::uint32_t* encodingOut, bool decode,
               bool escapeBlanks);
