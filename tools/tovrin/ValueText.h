#pragma once

#include <string>
#include <string_view>

#include "host/IVariant.h"
#include "tools/tovrin/CHost.h"

namespace RefHost {

// Values as people and scripts read them: compact JSON without blanks.

// A text in quotes, escaped as JSON wants it. Bytes that are no UTF-8 become U+FFFD, since JSON is
// text.
void AppendJsonText(std::string& out, std::string_view text);

// A number; one without a fraction is written as an integer, one that JSON cannot write as null.
void AppendJsonNumber(std::string& out, double number);

// Any value. A map is an object, whose keys are texts; data is a text of its bytes; an object is
// its serialised form, or where it has none the text that the rule language's ToString function of
// its type gives. What holds nothing is null.
//
// Throws CCallFailure when that function fails, or the object itself throws.
std::string JsonOf(Tovrin::IVariant& value, const CTransaction& transaction);

}  // namespace RefHost
