#pragma once

#include <string>
#include <string_view>

// Whether bytes have the form of UTF-8 text; if not, message tells where the first fault is, by
// line and by byte within it, both counted from 1. Sequences of up to four bytes pass by their form
// alone, overlong ones too. message stays as it was when all is well.
//
// Contract: the message calls the byte "Sign" and the line "column".
bool CheckUtf8(std::string_view bytes, std::string& message);
