#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "Common/CVariant.h"
#include "tests/Common/VariantSupport.h"

// What the tests of the variant's lists share.

// Positions that a list of two has not.
inline constexpr std::int64_t kFar[] = {
    -1,  std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), 2, 3,
    1000};

// A value's elements in a form that tests can compare, and that shows their types.
inline std::string Shown(const CVariant& value) {
  std::string shown;
  for (std::uint64_t i = 0; i < value.SizeOfList(); ++i) {
    const auto index = static_cast<std::int64_t>(i);
    if (i) shown += ",";
    CVariant element;
    bool ok = false;
    if (!value.ReadElement(index, element)) {
      shown += value.GetType() == VariantType::Dimension
                   ? std::to_string(value.GetLongListElem(index, ok))
                   : Utf8(value.GetTextListElem(index, ok));
    } else if (element.IsListType()) {
      shown += "[" + Shown(element) + "]";
    } else if (element.GetType() == VariantType::Double) {
      shown += std::to_string(element.GetDouble()).substr(0, 4);
    } else if (element.IsNumberType()) {
      shown += std::to_string(element.GetLong());
    } else if (element.GetType() == VariantType::Boolean) {
      shown += element.GetBool() ? "true" : "false";
    } else {
      shown += Utf8(element.GetText());
    }
  }
  return shown;
}
